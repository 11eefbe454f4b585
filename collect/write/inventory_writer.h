// Makes the tables of the inventory agree with the rows that they ought to have.
#ifndef ZYMDB_COLLECT_WRITE_INVENTORY_WRITER_H
#define ZYMDB_COLLECT_WRITE_INVENTORY_WRITER_H

#include <vector>

#include "collect/rows/report.h"
#include "collect/rows/table_content.h"
#include "common/client_objects.h"

namespace zymdb::collect {

// Reads each table once, compares in memory and writes what differs through the record helpers: a row that is
// as it should be costs no write. Rows with equal keys are paired in the order of their "_id"; what is left
// over is removed. The calling thread's transaction, which the caller begins and commits, makes all of it one
// change.
//
// Texts of devices never get into a filter unless they are harmless there: rows are addressed by "_id" or by
// numbers, and the change filter is left out for a row that holds a text with a quote or the like.
//
// Throws DatabaseError at the first failure.
std::vector<TableSummary> write_inventory(_zym_db_handle_t* handle, std::vector<TableContent> tables,
                                          const Observer& observer);

}  // namespace zymdb::collect

#endif
