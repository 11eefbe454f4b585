#include "client/dialect/dialect.h"

namespace zymdb::client {

Argument Argument::of(int64_t value) {
  Argument argument;
  argument.type = Type::kInteger;
  argument.integer = value;
  return argument;
}

Argument Argument::of(std::string_view value) {
  Argument argument;
  argument.type = Type::kText;
  argument.text = value;
  return argument;
}

void Translation::clear() {
  shape.clear();
  arguments.clear();
  tail = std::string::npos;
  grouped = false;
  reason = {};
  tokens.clear();
  unescaped.clear();
}

void append_identifier(std::string& sql, std::string_view name) {
  sql.push_back('"');
  for (size_t quote; (quote = name.find('"')) != name.npos; name.remove_prefix(quote + 1))
    sql.append(name.substr(0, quote)).append("\"\"");
  sql.append(name).push_back('"');
}

}  // namespace zymdb::client
