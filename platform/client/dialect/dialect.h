// The filter dialect: what the library's filters and statements mean, turned into SQL that any engine takes.
//
//  - Text in single or double quotes is a value, never a name, also where a column bears that name.
//  - A bare word that is neither a number, a keyword, a function nor a column of the statement's tables is a
//    text value where a condition stands, and refused elsewhere.
//  - Compared with a column of type TEXT, a bare word or number is a text as it is written (0x1F, 007), and
//    nothing at all is the empty text.
//  - Names are checked against the catalog and leave as quoted identifiers in the schema's spelling.
//  - Every value leaves as an argument: conditions that differ in their values only share one shape. Numbers
//    after GROUP BY, ORDER BY and LIMIT stay, because there they mean a column's position or a count.
//
// Pure functions of their arguments; nothing here knows an engine.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_DIALECT_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_DIALECT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/catalog.h"
#include "client/dialect/lexer.h"

namespace zymdb::client {

struct Argument {
  enum class Type : uint8_t { kInteger, kReal, kText, kBlob, kNull, kPlaceholder };

  Type type = Type::kNull;
  union {
    int64_t integer = 0;
    double real;
  };
  std::string_view text;  // of the translated text, the value set or the translation's own storage

  static Argument of(int64_t value);
  static Argument of(std::string_view value);
};

struct Translation {
  std::string shape;                // SQL with one "?" per argument, in order
  std::vector<Argument> arguments;  // kPlaceholder where the caller wrote "?"
  size_t tail = std::string::npos;  // where the outermost ORDER BY or LIMIT begins in the shape
  bool grouped = false;             // the outermost level has a GROUP BY
  bool bare = true;                 // the outermost level is a condition and nothing after it
  std::string_view reason;          // why it was refused

  void clear();

  std::vector<Token> tokens;  // scratch, kept for its memory
  std::string unescaped;      // texts whose doubled quotes were made single
};

// Translates the condition of a statement on `table`.
// Returns 0; ZYM_DB_STATUS_ERROR for text outside the dialect, kStatusTooLarge beyond its limits.
int translate_condition(const Catalog& catalog, const Table& table, std::string_view text, Translation& out);

// Translates a complete statement, which must be a SELECT.
int translate_select(const Catalog& catalog, std::string_view text, Translation& out);

// An entry of a query's column list: a column, a function of a column or of "*", either after DISTINCT.
struct ColumnEntry {
  std::string sql;
  std::string name;  // by which the result's column is found: the entry as written, without DISTINCT
  bool aggregate = false;
  bool plain = false;  // a column as it is
};

// False when the entry is none of these or names no column of the table.
bool parse_column(const Table& table, std::string_view entry, ColumnEntry& out,
                  const Flavour& flavour = kStandardSql);

// Appends a name as a quoted identifier.
void append_identifier(std::string& sql, std::string_view name, const Flavour& flavour);

// The functions that statements may call.
bool is_function(std::string_view word);

}  // namespace zymdb::client

#endif
