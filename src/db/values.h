// A value set: the columns that an insert or update writes.
#ifndef ZYMDB_SRC_DB_VALUES_H
#define ZYMDB_SRC_DB_VALUES_H

#include <cstdint>
#include <span>
#include <type_traits>

#include "controller/database_client.h"
#include "db/column.h"

namespace zymdb {

// Owns a value set of the client. A put that fails keeps the set from being written: the write answers the
// first such status instead.
class Values {
 public:
  explicit Values(_zym_db_handle_t* handle) : handle_(handle), values_(zym_db_get_content_values(handle)) {}
  ~Values();
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;

  // False when there was no memory for it.
  explicit operator bool() const { return values_ != nullptr; }

  void clear();

  // The type of the value picks the client's put.
  void put(const char* column, uint8_t value) { note(zym_db_content_put_uchar(values_, column, value)); }
  void put(const char* column, uint16_t value) {
    note(zym_db_content_put_short_uint(values_, column, value));
  }
  void put(const char* column, uint32_t value) { note(zym_db_content_put_uint(values_, column, value)); }
  void put(const char* column, int32_t value) { note(zym_db_content_put_int(values_, column, value)); }
  void put(const char* column, const char* text) { note(zym_db_content_put_text(values_, column, text)); }

  // An empty text is stored as NULL.
  void put_or_null(const char* column, const char* text);

  // The fields of `record`, as the table says how.
  template <class Record>
  void put_columns(std::type_identity_t<WrittenColumns<Record>> columns, const Record* record) {
    put_fields(columns.all(), columns.puts(), record);
  }

  int insert(const char* table);
  int update(const char* table, const char* filter);

  // insert_or_update_db_record; -1 when a put failed.
  int64_t insert_or_update(const char* table, const char* where, const char* filter);

 private:
  void put_fields(std::span<const Column> columns, Puts puts, const void* record);
  void put_text_field(const Column& column, Puts puts, const char* field);
  void put_number_field(const Column& column, Puts puts, const char* field);

  void note(int status) {
    if (status_ == ZYM_DB_STATUS_OK) status_ = status;
  }

  _zym_db_handle_t* handle_;
  zym_db_content_values_t* values_;
  int status_ = ZYM_DB_STATUS_OK;
};

}  // namespace zymdb

#endif
