// What the builders of drive lists share.
#ifndef ZYMDB_SRC_STORAGE_LIST_BUILDER_H
#define ZYMDB_SRC_STORAGE_LIST_BUILDER_H

#include "db/rows.h"
#include "zymdb_storage.h"

namespace zymdb {

// Lists the query's rows in zero-filled records; no array is made for no rows.
template <class Read>
int build_list(Query& query, _ZYMDB_AimDisk_List* list, Read read) {
  if (query.row_count() == 0) return query.status();
  return list_rows(query, allocate_zeroed_array<_ZYMDB_AimDisk>, list->count, list->disks,
                   [&](_ZYMDB_AimDisk& drive) {
                     read(drive);
                     return true;
                   });
}

}  // namespace zymdb

#endif
