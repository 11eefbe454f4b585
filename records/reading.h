// Reading the inventory through the library's operations, whole or not at all.
#ifndef ZYMDB_RECORDS_READING_H
#define ZYMDB_RECORDS_READING_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "common/client_extensions.h"
#include "common/client_objects.h"

namespace zymdb::records {

// The reading of one kind of record. List operations answer 0 when the rows end early, and a part of the
// hardware must not be taken for the whole: the client's own last error tells.
class Reading {
 public:
  // `what`, in the plural: "adapters".
  explicit Reading(std::string what);

  // Throws DatabaseError unless `status` is 0.
  void require(int status) const;

  // Throws DatabaseError when a call of the client has failed since the reading began.
  void require_whole() const;

  const std::string& what() const { return what_; }

 private:
  std::string what_;
};

// Takes over an array that an operation of the library handed out.
template <class T>
std::vector<T> take_array(T* array, size_t count) {
  const std::unique_ptr<T, decltype(&std::free)> owner(array, &std::free);
  return array == nullptr ? std::vector<T>() : std::vector<T>(array, array + count);
}

// The records of a table whose operations list row ids first, by row id. `read` fills the record of an id and
// answers the library's status.
template <class Record, class List, class Read>
std::vector<Record> read_by_id(const Reading& reading, int (*list_ids)(List*), Read read) {
  List list{};
  const int status = list_ids(&list);
  auto ids = take_array(list.ids, list.count);
  reading.require(status);
  std::sort(ids.begin(), ids.end());
  std::vector<Record> records;
  for (const uint32_t id : ids) {
    Record record{};
    const int outcome = read(record, id);
    // A row that was removed since it was listed is no failure; one that cannot be read is an error of the
    // client.
    if (outcome == ZYM_DB_STATUS_ERROR) continue;
    reading.require(outcome);
    records.push_back(std::move(record));
  }
  reading.require_whole();
  return records;
}

}  // namespace zymdb::records

#endif
