// What differs between the SQL of one engine and another's.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_FLAVOUR_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_FLAVOUR_H

#include <string_view>

namespace zymdb::client {

struct Flavour {
  char quote;                    // around names
  std::string_view default_row;  // what stands in an insert without values
  // A sub-select of a change's condition finds what the change has done already.
  bool changes_see_themselves = false;
  // A function that takes the rows of a query from the engine; empty: none does.
  std::string_view gathering = {};
};

inline constexpr Flavour kStandardSql = {'"', " DEFAULT VALUES"};

}  // namespace zymdb::client

#endif
