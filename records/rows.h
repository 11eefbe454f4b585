// The rows of a table that no operation of the library lists as they are.
#ifndef ZYMDB_RECORDS_ROWS_H
#define ZYMDB_RECORDS_ROWS_H

#include <cstdint>
#include <string>
#include <vector>

#include "records/reading.h"
#include "records/value.h"

namespace zymdb::records {

class Rows {
 public:
  // Without names all columns. Throws DatabaseError unless the table can be read.
  Rows(const Reading& reading, _zym_db_handle_t* handle, const char* table,
       const std::vector<const char*>& columns = {});

  // Whether there is another row, which the following reads are about.
  bool step();

  // Empty and 0 for a NULL.
  std::string text(const char* column);
  // The same for texts of more than 1,024 bytes.
  std::string long_text(const char* column);
  uint32_t number(const char* column);

  // A number as it is stored, with all its bits: none for a NULL.
  Value stored(const char* column);

 private:
  ResultPtr result_;
};

}  // namespace zymdb::records

#endif
