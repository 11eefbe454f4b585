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
  bare = true;
  reason = {};
  tokens.clear();
  unescaped.clear();
}

void append_identifier(std::string& sql, std::string_view name, const Flavour& flavour) {
  const char quote = flavour.quote;
  sql.push_back(quote);
  for (size_t place; (place = name.find(quote)) != name.npos; name.remove_prefix(place + 1))
    sql.append(name.substr(0, place)).append(2, quote);
  sql.append(name).push_back(quote);
}

}  // namespace zymdb::client
