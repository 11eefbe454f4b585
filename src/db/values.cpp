#include "db/values.h"

#include <cstring>

namespace zymdb {
namespace {

template <class Number>
Number number_at(const void* field) {
  Number number;
  std::memcpy(&number, field, sizeof number);
  return number;
}

}  // namespace

Values::~Values() {
  if (values_ != nullptr) zym_db_free_content_values(values_);
}

void Values::clear() {
  status_ = ZYM_DB_STATUS_OK;
  note(zym_db_content_clear(values_));
}

void Values::put_or_null(const char* column, const char* text) {
  // The helper takes its text writable and does not write it.
  note(put_text_value(values_, column, reinterpret_cast<unsigned char*>(const_cast<char*>(text))));
}

void Values::put_text_field(const Column& column, Puts puts, const char* field) {
  if (puts == Puts::kWideOrNull)
    put_or_null(column.name, field);
  else
    put(column.name, field);
}

void Values::put_number_field(const Column& column, Puts puts, const char* field) {
  const bool is_wide = puts != Puts::kAsFields;
  if (column.is_signed)
    put(column.name, number_at<int32_t>(field));
  else if (column.size == sizeof(uint8_t) && is_wide)
    put(column.name, uint32_t{number_at<uint8_t>(field)});
  else if (column.size == sizeof(uint8_t))
    put(column.name, number_at<uint8_t>(field));
  else if (column.size == sizeof(uint16_t) && is_wide)
    put(column.name, uint32_t{number_at<uint16_t>(field)});
  else if (column.size == sizeof(uint16_t))
    put(column.name, number_at<uint16_t>(field));
  else
    put(column.name, number_at<uint32_t>(field));
}

void Values::put_fields(std::span<const Column> columns, Puts puts, const void* record) {
  for (const Column& column : columns) {
    const char* const field = static_cast<const char*>(record) + column.offset;
    if (column.reading == Reading::kText)
      put_text_field(column, puts, field);
    else
      put_number_field(column, puts, field);
  }
}

int Values::insert(const char* table) {
  if (status_ != ZYM_DB_STATUS_OK) return status_;
  int64_t id = 0;
  return zym_db_insert(handle_, table, values_, 0, &id);
}

int Values::update(const char* table, const char* filter) {
  if (status_ != ZYM_DB_STATUS_OK) return status_;
  return zym_db_update(handle_, table, values_, filter, nullptr, 0, nullptr);
}

int64_t Values::insert_or_update(const char* table, const char* where, const char* filter) {
  if (status_ != ZYM_DB_STATUS_OK) return -1;
  return insert_or_update_db_record(handle_, table, where, values_, filter);
}

}  // namespace zymdb
