// Columns as they are stored, beside the library's records: a record's field cannot tell a NULL from a 0, and
// keeps only the low bits of a larger number.
#ifndef ZYMDB_RECORDS_STORED_ROWS_H
#define ZYMDB_RECORDS_STORED_ROWS_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "records/reading.h"
#include "records/record.h"
#include "records/rows.h"

namespace zymdb::records {

using StoredRow = std::map<std::string, Value, std::less<>>;

// The named columns, all of numbers, of the row that is read.
StoredRow stored_row(Rows& rows, const std::vector<const char*>& columns);

// The named columns, all of numbers, of every row of a table, by the number in `key`. Rows without a key are
// left out.
std::map<uint32_t, StoredRow> read_stored_rows(const Reading& reading, const char* table, const char* key,
                                               const std::vector<const char*>& columns);

// The same of one column of texts, without those that are empty.
std::map<uint32_t, std::string> read_stored_texts(const Reading& reading, const char* table, const char* key,
                                                  const char* column);

// The columns of a record's number fields: all but its "_id".
template <class Record, size_t N>
std::vector<const char*> number_columns(const Field<Record> (&fields)[N]) {
  std::vector<const char*> columns;
  for (const auto& field : fields) {
    const bool is_id = std::string_view(field.info.key) == "_id";
    if (field.info.kind == Kind::kNumber && !field.info.is_derived && !is_id)
      columns.push_back(field.info.key);
  }
  return columns;
}

// A record of the library with its row.
template <class Base>
struct Stored : Base {
  StoredRow row;

  // The column of a field; null for one that was not read.
  const Value* stored(const char* column) const {
    const auto found = row.find(column);
    return found == row.end() ? nullptr : &found->second;
  }
};

}  // namespace zymdb::records

#endif
