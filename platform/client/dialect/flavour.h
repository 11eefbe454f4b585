// What differs between the SQL of one engine and another's.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_FLAVOUR_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_FLAVOUR_H

#include <string_view>

namespace zymdb::client {

struct Flavour {
  char quote;                    // around names
  std::string_view default_row;  // what stands in an insert without values
  std::string_view gathering =
      {};  // a function that takes the rows of a query from the engine; empty: none does
};

inline constexpr Flavour kStandardSql = {'"', " DEFAULT VALUES"};

}  // namespace zymdb::client

#endif
