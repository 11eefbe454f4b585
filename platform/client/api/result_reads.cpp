// The client's operations on results: arguments are checked here, the work is done elsewhere.
#include "client/result/result_pool.h"
#include "controller/database_client.h"

namespace {

template <class Number>
int read_number(const zym_db_result_t* result, int column, Number* value) {
  if (result == nullptr || value == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_number(column, value);
}

template <class Number>
int extract_number(const zym_db_result_t* result, const char* column, Number* value) {
  if (result == nullptr || column == nullptr || value == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_number(result->find(column), value);
}

}  // namespace

int zym_db_result_step(zym_db_result_t* result) {
  return result != nullptr ? result->step() : ZYM_DB_STATUS_INVALID_PARAM;
}

unsigned int zym_db_result_row_count(zym_db_result_t* result) {
  return result != nullptr ? result->row_count() : 0;
}

int zym_db_result_reset(zym_db_result_t* result) {
  if (result == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  result->reset();
  return 0;
}

int zym_db_result_column_uint(zym_db_result_t* result, int column, unsigned int* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_int(zym_db_result_t* result, int column, int* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_uint64(zym_db_result_t* result, int column, uint64_t* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_int64(zym_db_result_t* result, int column, int64_t* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_uchar(zym_db_result_t* result, int column, unsigned char* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_short_uint(zym_db_result_t* result, int column, unsigned short* value) {
  return read_number(result, column, value);
}

int zym_db_result_column_text(zym_db_result_t* result, int column, char* text, int size) {
  if (result == nullptr || text == nullptr || size < 1) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_text(column, text, static_cast<size_t>(size));
}

int zym_db_result_column_blob(zym_db_result_t* result, int column, void* data, int size) {
  if (result == nullptr || data == nullptr || size < 0) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_blob(column, data, static_cast<size_t>(size));
}

int zym_db_result_column_bytes(zym_db_result_t* result, int column, int* length) {
  if (result == nullptr || length == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_bytes(column, length);
}

int zym_db_result_column_is_null(zym_db_result_t* result, int column, int* is_null) {
  if (result == nullptr || is_null == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_is_null(column, is_null);
}

int extract_uint_column_from_result(zym_db_result_t* result, const char* column, unsigned int* value) {
  return extract_number(result, column, value);
}

int extract_uint64_column_from_result(zym_db_result_t* result, const char* column, uint64_t* value) {
  return extract_number(result, column, value);
}

int extract_str_column_from_result(zym_db_result_t* result, const char* column, char* text, int size) {
  if (result == nullptr || column == nullptr || text == nullptr || size < 1)
    return ZYM_DB_STATUS_INVALID_PARAM;
  return result->read_text(result->find(column), text, static_cast<size_t>(size));
}

int zym_db_free_result(zym_db_result_t* result) {
  if (result == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  zymdb::client::GiveBack()(result);
  return 0;
}
