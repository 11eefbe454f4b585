// A statement of the dialect, taken apart.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_EXPRESSION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_EXPRESSION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/catalog.h"
#include "client/dialect/statement.h"

namespace zymdb::client::mariadb {

struct Select;

struct Expression {
  enum class Kind : uint8_t {
    kColumn,
    kArgument,  // "?"
    kNull,
    kNumber,   // as written: a column's position
    kUnary,    // - + ~
    kBinary,   // arithmetic, bits, "||"
    kCompare,  // = < > <= >= <> and IS, IS NOT
    kNot,
    kAnd,
    kOr,
    kBetween,
    kIn,  // the first part in the others
    kInSelect,
    kLike,  // with a third part: the ESCAPE
    kCall,
    kSelect,
    kExists,
  };

  Kind kind = Kind::kNull;
  bool negated = false;   // NOT before BETWEEN, IN, LIKE
  bool distinct = false;  // of a call
  bool star = false;      // of a call
  std::string word;       // the operator, the function's name, the number
  const Column* column = nullptr;
  size_t table = 0;  // the number of the column's table in the statement
  size_t argument = 0;
  size_t depth = 1;  // of the tree
  std::vector<Expression> parts;
  std::shared_ptr<const Select> select;
};

struct Order {
  Expression by;
  bool descending = false;
};

struct Source {
  const Table* table = nullptr;
  size_t number = 0;
};

struct Item {
  Expression value;
  std::string name;  // of a column; else as it is written
};

struct Select {
  bool distinct = false;
  std::vector<Item> items;
  std::vector<Source> sources;
  std::optional<Expression> where;
  std::vector<Expression> groups;
  std::optional<Expression> having;
  std::vector<Order> orders;
  std::optional<int64_t> limit;
  int64_t offset = 0;
};

// What is done to the value of an argument before it is compared: SQLite's affinity of the other side.
// kPattern: of what stands behind LIKE.
enum class Affinity : uint8_t { kNone, kNumber, kText, kPattern };

struct Parsed {
  Select select;                       // of a change: its table and condition, without items
  std::vector<const Column*> columns;  // what an insert or update writes
  std::vector<Affinity> affinities;    // of the arguments behind those of the columns
};

}  // namespace zymdb::client::mariadb

#endif
