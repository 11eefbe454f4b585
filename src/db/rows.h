// The loop behind every list operation, and the arrays that it fills.
#ifndef ZYMDB_SRC_DB_ROWS_H
#define ZYMDB_SRC_DB_ROWS_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "db/query.h"

namespace zymdb {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

// An array that is handed to a C caller, who releases it with free.
template <class T>
using CallerArray = std::unique_ptr<T[], Free>;

// Null when there is no memory for `count` elements, or for their size.
template <class T>
CallerArray<T> allocate_array(size_t count) {
  if (count > SIZE_MAX / sizeof(T)) return nullptr;
  return CallerArray<T>(static_cast<T*>(std::malloc(count * sizeof(T))));
}

template <class T>
CallerArray<T> allocate_zeroed_array(size_t count) {
  return CallerArray<T>(static_cast<T*>(std::calloc(count, sizeof(T))));
}

// Steps through the rows and lets `read` fill the next free element; a row for which it answers false is
// left out. Returns the status that ended the loop: ZYM_DB_STATUS_ROW when `room` elements were filled and
// there was still a row.
template <class T, class Count, class Read>
int read_rows(Query& query, T* elements, unsigned room, Count& filled, Read read) {
  int status;
  while ((status = query.step()) == ZYM_DB_STATUS_ROW && filled < room)
    if (read(elements[filled])) ++filled;
  return status;
}

// The rows ran out, or the array was full.
constexpr bool ended_well(int status) {
  return status == ZYM_DB_STATUS_ROW || status == ZYM_DB_STATUS_DONE;
}

// Leaves the list empty, and answers the status that it failed with.
template <class List>
int fail_list(List* list, int status) {
  *list = {};
  return status;
}

// Lists the query's rows in an array with room for so many of them; a step that fails leaves the list as it
// is.
template <class T, class Read>
int fill_list(Query& query, CallerArray<T> array, unsigned room, uint32_t& count, T*& elements, Read read) {
  uint32_t filled = 0;
  const int status = read_rows(query, array.get(), room, filled, read);
  if (!ended_well(status)) return status;
  count = filled;
  elements = array.release();
  return ZYM_DB_STATUS_OK;
}

// Lists the query's rows into an array of the row count: all of it, or nothing when the query or a step
// fails.
template <class T, class Read>
int list_rows(Query& query, CallerArray<T> (*allocate)(size_t), uint32_t& count, T*& elements, Read read) {
  if (!query.has_result()) return query.status();
  const unsigned room = query.row_count();
  CallerArray<T> array = allocate(room);
  if (array == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  return fill_list(query, std::move(array), room, count, elements, read);
}

}  // namespace zymdb

#endif
