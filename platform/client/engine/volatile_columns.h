// Which columns of a schema change while nothing happens to what they describe: its lines "-- volatile: A,
// B", each in front of a table, tell; "*" means all of the table.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_VOLATILE_COLUMNS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_VOLATILE_COLUMNS_H

#include <set>
#include <string_view>
#include <utility>

namespace zymdb::client {

class VolatileColumns {
 public:
  // Keeps views of the schema's text.
  explicit VolatileColumns(std::string_view schema);

  bool has_all_of(std::string_view table) const { return columns_.contains({table, "*"}); }
  bool has(std::string_view table, std::string_view column) const {
    return columns_.contains({table, column});
  }

 private:
  void mark(std::string_view names, std::string_view table);

  std::set<std::pair<std::string_view, std::string_view>> columns_;
};

}  // namespace zymdb::client

#endif
