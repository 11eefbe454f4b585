// Statements that were taken apart before, and what they are in MariaDB's words for arguments of these
// classes.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_SHAPES_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_SHAPES_H

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "client/engine/mariadb/emitter.h"
#include "client/result/result.h"

namespace zymdb::client::mariadb {

struct Variant {
  std::string sql;
  std::vector<size_t> order;  // which argument each "?" is
  std::vector<Class> classes;
  std::vector<bool> expressions;
  ColumnNames names;

  std::vector<Argument> arguments_of(std::span<const Argument> arguments) const;
};

// A statement and the arguments that it was composed with.
class Shape {
 public:
  // False when it is refused; `reason` tells why.
  bool read(const Catalog& catalog, Request::Kind kind, std::string_view sql, std::vector<std::string> names,
            std::string& reason);

  const Select& select() const { return parsed_.select; }
  const std::vector<const Column*>& columns() const { return parsed_.columns; }

  // Of a read. The arguments of the condition are given their affinities first.
  const Variant* reading(std::vector<Argument>& arguments, std::string& reason);
  // The rows that a change is about, with these columns beside "_id".
  const Variant* affected(std::vector<Argument>& arguments, std::span<const Column* const> columns,
                          std::string& reason);

 private:
  using Emit = bool (*)(const Select&, std::span<const Column* const>, std::span<const Class>, Emitted&,
                        std::string&);
  const Variant* find(std::vector<Argument>& arguments, std::span<const Column* const> columns, Emit emit,
                      std::string& reason);
  std::vector<Class> convert(std::vector<Argument>& arguments) const;

  Parsed parsed_;
  std::vector<std::string> names_;
  std::map<std::string, Variant> variants_;  // by the classes of the arguments
};

class Shapes {
 public:
  Shape* find(std::string_view key);
  Shape& add(std::string_view key, Shape shape);

 private:
  static constexpr size_t kMost = 256;
  std::unordered_map<std::string, std::unique_ptr<Shape>, WordHash, std::equal_to<>> shapes_;
};

// The text's number, as SQLite's affinity finds it: an integer, a fraction, or the text itself.
Argument as_number(const Argument& argument);
// A number's text. `storage` holds it.
Argument as_text(const Argument& argument, std::string& storage);

// A LIKE's pattern as a regular expression on bytes: "_" is one character of UTF-8, which LIKE itself would
// take for one byte.
std::string regular_expression(std::string_view pattern);

}  // namespace zymdb::client::mariadb

#endif
