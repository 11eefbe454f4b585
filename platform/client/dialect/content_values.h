// An ordered set of (column, value) pairs for an insert or update.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_CONTENT_VALUES_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_CONTENT_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/dialect.h"

namespace zymdb::client {

class ContentValues {
 public:
  void clear() { count_ = 0; }

  // A later value of a column replaces the earlier one in its place.
  void put_text(std::string_view column, std::string_view value);
  void put_blob(std::string_view column, std::string_view value);
  void put_integer(std::string_view column, int64_t value);
  void put_null(std::string_view column);

  size_t size() const { return count_; }
  std::string_view column(size_t place) const { return pairs_[place].column; }
  Argument value(size_t place) const;

 private:
  struct Pair {
    std::string column;
    std::string text;
    int64_t integer = 0;
    Argument::Type type = Argument::Type::kNull;
  };

  Pair& pair_of(std::string_view column);

  std::vector<Pair> pairs_;  // those beyond count_ are kept for their memory
  size_t count_ = 0;
};

}  // namespace zymdb::client

#endif
