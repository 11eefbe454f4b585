// Writes statements of the dialect in MariaDB's SQL, with the meaning that SQLite gives them.
//
// MariaDB turns a text into a number wherever one is compared with the other; SQLite never says that "" is 0.
// The classes of all values are known here, those of the arguments too, so that each comparison is written as
// one of two of a kind, or as the constant that it is.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_EMITTER_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_EMITTER_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "client/engine/mariadb/expression.h"

namespace zymdb::client::mariadb {

// What a value is when it is not NULL.
enum class Class : uint8_t {
  kNull,
  kInteger,
  kReal,
  kText,
  kBytes,
  kWide,    // of a result's column: an integer, or the fraction that it is beyond 64 bits
  kPattern  // of an argument: a LIKE's pattern, made a regular expression
};

Class class_of(const Argument& argument);

// What SQLite takes for one character, as a regular expression of bytes.
inline constexpr char kCharacter[] = "(?:[\\xC0-\\xFF][\\x80-\\xBF]*+|[\\x00-\\xBF])";

// SQL whose "?" are arguments of a statement, in the order of their numbers here.
struct Sql {
  std::string text;
  std::vector<size_t> arguments;

  Sql() = default;
  Sql(const char* written) : text(written) {}
  Sql(std::string written) : text(std::move(written)) {}

  Sql& operator+=(const Sql& more) {
    text += more.text;
    arguments.insert(arguments.end(), more.arguments.begin(), more.arguments.end());
    return *this;
  }
};

struct OutputColumn {
  std::string name;
  Class value = Class::kNull;
  bool is_expression = false;  // no table's column: NULL over no rows reads as 0
};

struct Emitted {
  Sql sql;
  std::vector<OutputColumn> columns;
};

// False when MariaDB has no statement for it; `reason` tells why.
bool emit_select(const Select& select, std::span<const Class> arguments, Emitted& out, std::string& reason);

// The rows that a change is about, locked: "_id" and the columns.
bool emit_affected(const Select& select, std::span<const Column* const> columns,
                   std::span<const Class> arguments, Emitted& out, std::string& reason);

std::string identifier(std::string_view name);

}  // namespace zymdb::client::mariadb

#endif
