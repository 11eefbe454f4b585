// The list of a table's row ids.
#ifndef ZYMDB_SRC_CPU_MEM_ROW_IDS_H
#define ZYMDB_SRC_CPU_MEM_ROW_IDS_H

#include <cstdint>

#include "db/rows.h"

namespace zymdb {

// Lists the "_id" of every row of `table`; ids that cannot be read are left out. A list operation of the
// controller in all but one point: what was read before a failing step stays listed, for the caller to free.
template <class List>
int list_row_ids(_zym_db_handle_t* handle, const char* table, List* list) {
  Query query(handle, table, {"_id"}, nullptr);
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  const unsigned room = query.row_count();
  CallerArray<uint32_t> ids = allocate_array<uint32_t>(room);
  list->count = 0;
  list->ids = ids.get();
  if (ids == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  ids.release();

  const int status = read_rows(query, list->ids, room, list->count,
                               [&](uint32_t& id) { return query.read(0, id) == ZYM_DB_STATUS_OK; });
  return ended_well(status) ? ZYM_DB_STATUS_OK : status;
}

}  // namespace zymdb

#endif
