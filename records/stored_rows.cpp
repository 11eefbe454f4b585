#include "records/stored_rows.h"

#include <utility>

#include "records/rows.h"

namespace zymdb::records {

StoredRow stored_row(Rows& rows, const std::vector<const char*>& columns) {
  StoredRow row;
  for (const char* column : columns) row[column] = rows.stored(column);
  return row;
}

std::map<uint32_t, StoredRow> read_stored_rows(const Reading& reading, const char* table, const char* key,
                                               const std::vector<const char*>& columns) {
  std::vector<const char*> names{key};
  names.insert(names.end(), columns.begin(), columns.end());
  Rows rows(reading, get_dmdb_handle(), table, names);
  std::map<uint32_t, StoredRow> found;
  while (rows.step()) {
    const Value of = rows.stored(key);
    if (is_known(of)) found[static_cast<uint32_t>(std::get<uint64_t>(of))] = stored_row(rows, columns);
  }
  reading.require_whole();
  return found;
}

std::map<uint32_t, std::string> read_stored_texts(const Reading& reading, const char* table, const char* key,
                                                  const char* column) {
  Rows rows(reading, get_dmdb_handle(), table, {key, column});
  std::map<uint32_t, std::string> found;
  while (rows.step()) {
    const Value of = rows.stored(key);
    std::string text = rows.text(column);
    if (is_known(of) && !text.empty())
      found.emplace(static_cast<uint32_t>(std::get<uint64_t>(of)), std::move(text));
  }
  reading.require_whole();
  return found;
}

}  // namespace zymdb::records
