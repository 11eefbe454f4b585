#include "watched_inventory.h"

#include <algorithm>

#include "checks.h"
#include "common/client_objects.h"

namespace zymdb::fuzz {

void WatchedInventory::store(const std::string& table, const Texts& texts) const {
  const ValuesPtr values(zym_db_get_content_values(get_dmdb_handle()));
  size_t place = 0;
  for (const std::string& column : tables_.at(table).texts)
    zym_db_content_put_text(values.get(), column.c_str(),
                            texts[place++ % std::max<size_t>(texts.size(), 1)].c_str());
  require(zym_db_update(get_dmdb_handle(), table.c_str(), values.get(), nullptr, nullptr, 0, nullptr) == 0,
          "cannot store", table);
}

std::vector<std::string> WatchedInventory::insertions(unsigned n) const {
  std::vector<std::string> statements;
  for (const auto& [table, columns] : tables_) {
    std::string values;
    for (unsigned i = 0; i < columns.count; ++i) values += (i == 0 ? "" : ",") + std::to_string(n);
    statements.push_back("INSERT INTO " + table + " VALUES (" + values + ")");
  }
  return statements;
}

}  // namespace zymdb::fuzz
