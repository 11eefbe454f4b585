#include "client/engine/volatile_columns.h"

#include <algorithm>

namespace zymdb::client {
namespace {

constexpr std::string_view kMark = "\n-- volatile: ";
constexpr std::string_view kTable = "CREATE TABLE \"";

std::string_view until(std::string_view text, char end) {
  return text.substr(0, text.find(end));
}

}  // namespace

VolatileColumns::VolatileColumns(std::string_view schema) {
  for (size_t at = schema.find(kMark); at != std::string_view::npos; at = schema.find(kMark)) {
    schema.remove_prefix(at + kMark.size());
    const std::string_view names = until(schema, '\n');
    schema.remove_prefix(std::min(schema.size(), schema.find(kTable)));
    if (!schema.empty()) mark(names, until(schema.substr(kTable.size()), '"'));
  }
}

void VolatileColumns::mark(std::string_view names, std::string_view table) {
  while (!names.empty()) {
    const std::string_view name = until(names, ',');
    columns_.emplace(table, name);
    names.remove_prefix(std::min(names.size(), name.size() + 2));
  }
}

}  // namespace zymdb::client
