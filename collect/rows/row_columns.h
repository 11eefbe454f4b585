// Which part of a record fills which column of a row.
#ifndef ZYMDB_COLLECT_ROWS_ROW_COLUMNS_H
#define ZYMDB_COLLECT_ROWS_ROW_COLUMNS_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "collect/rows/table_content.h"

namespace zymdb::collect {

template <typename Record>
struct Column {
  ColumnSpec spec;
  Value (*read)(const Record&);
};

template <typename T>
Value number_or_null(const std::optional<T>& number) {
  return number ? Value::number(*number) : Value();
}

// The host is one node.
template <typename Record>
Value only_node(const Record&) {
  return Value::number(0);
}

inline Value text_or_null(const std::optional<std::string>& text) {
  return text ? Value::text(*text) : Value();
}

// A column of other writers, which tells whose the row is.
template <typename Record>
constexpr Column<Record> others_column(const char* name, Kind kind) {
  return {{name, Role::kOthers, kind}, [](const Record&) { return Value(); }};
}

template <typename Record, size_t N>
TableContent make_content(const char* table, const Column<Record> (&columns)[N]) {
  TableContent content;
  content.table = table;
  for (const auto& column : columns) content.columns.push_back(column.spec);
  return content;
}

template <typename Record, size_t N>
void add_row(TableContent& content, const Column<Record> (&columns)[N], const Record& record,
             bool place_known, bool is_told = true) {
  Row row{.values = {}, .place_known = place_known, .is_told = is_told};
  row.values.reserve(N);
  for (const auto& column : columns) row.values.push_back(column.read(record));
  content.rows.push_back(std::move(row));
}

}  // namespace zymdb::collect

#endif
