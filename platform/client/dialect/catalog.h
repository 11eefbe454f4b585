// The tables and columns of a database, and its SQL: the only names that ever become part of a statement.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_CATALOG_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_CATALOG_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "client/dialect/flavour.h"

namespace zymdb::client {

constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

// Compares ASCII letters without regard to case, as SQL compares names and keywords. Inline, because most
// words differ in their length.
constexpr bool same_word(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (a[i] != b[i] && lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

struct WordHash {
  using is_transparent = void;
  size_t operator()(std::string_view word) const;
};
struct WordEqual {
  using is_transparent = void;
  // Most callers write a name as the schema does.
  bool operator()(std::string_view a, std::string_view b) const { return a == b || same_word(a, b); }
};

struct Column {
  std::string name;  // as the schema spells it
  bool is_text = false;
  bool is_bytes = false;  // neither a text nor a number
};

class Table {
 public:
  explicit Table(std::string name) : name_(std::move(name)) {}

  void add_column(Column column);

  const std::string& name() const { return name_; }
  const std::vector<Column>& columns() const { return columns_; }

  // Null when there is none.
  const Column* column(std::string_view word) const;

 private:
  std::string name_;
  std::vector<Column> columns_;
  std::unordered_map<std::string, size_t, WordHash, WordEqual> places_;
};

class Catalog {
 public:
  explicit Catalog(const Flavour& flavour = kStandardSql);

  const Flavour& flavour() const { return *flavour_; }

  // No other catalog of the process, now or before, has the same, but for its copies.
  uint64_t number() const { return number_; }

  void add_column(const std::string& table, std::string column, bool is_text = false, bool is_bytes = false);

  const Table* table(std::string_view word) const;

 private:
  const Flavour* flavour_;
  uint64_t number_;
  std::unordered_map<std::string, Table, WordHash, WordEqual> tables_;
};

}  // namespace zymdb::client

#endif
