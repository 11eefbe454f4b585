// Reading the records of a table whose operations list row ids first.
#ifndef ZYMDB_TOOL_SHOW_RECORDS_BY_ID_H
#define ZYMDB_TOOL_SHOW_RECORDS_BY_ID_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "show/inventory.h"
#include "zymdb_db.h"

namespace zymdb::tool {

// The records by row id. `read` fills the record of an id and answers the library's status; `action` says
// what is being done, for the message of a failure.
template <class Record, class List, class Read>
std::vector<Record> read_records_by_id(int (*list_ids)(List*), Read read, const std::string& action) {
  List list{};
  const int status = list_ids(&list);
  auto ids = take_array(list.ids, list.count);
  require_status(status, action);
  std::sort(ids.begin(), ids.end());
  std::vector<Record> records;
  for (const uint32_t id : ids) {
    Record record{};
    const int outcome = read(record, id);
    // A row that was removed since it was listed is no failure; one that cannot be read is logged.
    if (outcome == ZYM_DB_STATUS_ERROR) continue;
    require_status(outcome, action);
    records.push_back(record);
  }
  return records;
}

}  // namespace zymdb::tool

#endif
