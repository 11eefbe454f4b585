#include "db/query.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>

namespace zymdb {
namespace {

int run(_zym_db_handle_t* handle, const char* table, std::span<const Column> columns, const char* filter,
        const _zym_db_param_t* params, int nparams, zym_db_result_t** result) {
  const char* names[kMaxColumns];
  int count = 0;
  for (const Column& column : columns) names[count++] = column.name;
  return zym_db_query(handle, table, names, count, filter, params, nparams, 0, result);
}

template <class Field, class Number>
void store_as(Number value, void* field) {
  const Field low_bits = static_cast<Field>(value);
  std::memcpy(field, &low_bits, sizeof low_bits);
}

// Numbers are read 32 bits wide and stored with the low bits that the field has room for; the fields of
// packed records are not aligned. Inline, as what follows is, for each number of each row comes this way.
template <class Number>
inline void store(const Column& column, Number value, void* field) {
  switch (column.size) {
    case 1:
      return store_as<uint8_t>(value, field);
    case 2:
      return store_as<uint16_t>(value, field);
    case 4:
      return store_as<uint32_t>(value, field);
    default:
      return store_as<uint64_t>(value, field);
  }
}

template <class Number, class Read>
inline void read_number(const Column& column, void* field, Read read) {
  Number value = 0;
  if (read(&value) != ZYM_DB_STATUS_OK) value = column.unreadable;
  store(column, value, field);
}

}  // namespace

Query::Query(_zym_db_handle_t* handle, const char* table, Names columns, const char* filter)
    : status_(zym_db_query(handle, table, columns.begin(), static_cast<int>(columns.size()), filter, nullptr,
                           0, 0, &result_)) {}

Query::Query(_zym_db_handle_t* handle, const char* table, Names columns, const char* filter,
             const _zym_db_param_t& param)
    : status_(zym_db_query(handle, table, columns.begin(), static_cast<int>(columns.size()), filter, &param,
                           1, 0, &result_)) {}

Query::Query(_zym_db_handle_t* handle, const char* table, std::span<const Column> columns, const char* filter,
             const _zym_db_param_t* params, int nparams)
    : status_(run(handle, table, columns, filter, params, nparams, &result_)) {}

Query::Query(_zym_db_handle_t* handle, const char* table, AllColumns, const char* filter,
             const _zym_db_param_t* param)
    : status_(zym_db_query(handle, table, nullptr, 0, filter, param, 1, 0, &result_)) {}

void Query::release() {
  if (result_ != nullptr) zym_db_free_result(result_);
  result_ = nullptr;
}

int Query::read_number_in_text(int column, unsigned long& number) {
  char text[8] = {};
  const int status = read_text(column, text, 6);
  if (status != ZYM_DB_STATUS_OK) return status;
  // Five characters hold every 16-bit number; with a prefix they must hold two more.
  if (std::strlen(text) == 5 && strncasecmp(text, "0x", 2) == 0) {
    char longer[8] = {};
    if (read_text(column, longer, sizeof longer) == ZYM_DB_STATUS_OK) std::memcpy(text, longer, sizeof text);
  }
  number = std::strtoul(text, nullptr, 0);
  return ZYM_DB_STATUS_OK;
}

template <class Number>
int Query::read_whole(int column, void* field) {
  Number number = 0;
  const int status = read(column, number);
  if (status == ZYM_DB_STATUS_OK) std::memcpy(field, &number, sizeof number);
  return status;
}

int Query::read_required(const Column& column, int index, char* field) {
  if (column.reading == Reading::kText) return read_text(index, field, column.size);
  switch (column.size) {
    case sizeof(uint8_t):
      return read_whole<uint8_t>(index, field);
    case sizeof(uint16_t):
      return read_whole<uint16_t>(index, field);
    case sizeof(uint32_t):
      return read_whole<uint32_t>(index, field);
    default:
      return read_whole<uint64_t>(index, field);
  }
}

bool Query::read_fields(std::span<const Column> columns, void* record, int first) {
  int index = first;
  for (const Column& column : columns) {
    char* const field = static_cast<char*>(record) + column.offset;
    if (column.is_required) {
      if (read_required(column, index, field) != ZYM_DB_STATUS_OK) return false;
    } else if (column.reading == Reading::kText) {
      field[0] = '\0';
      read_text(index, field, column.size);
    } else if (column.reading == Reading::kNumberInText) {
      read_number<unsigned long>(column, field,
                                 [&](unsigned long* value) { return read_number_in_text(index, *value); });
    } else if (column.reading == Reading::kNumber && column.size == sizeof(uint64_t)) {
      read_number<uint64_t>(column, field, [&](uint64_t* value) { return read(index, *value); });
    } else if (column.reading == Reading::kNumber) {
      read_number<uint32_t>(column, field, [&](uint32_t* value) { return read(index, *value); });
    }
    ++index;
  }
  return true;
}

void Query::read_fields_by_name(std::span<const Column> columns, void* record) {
  for (const Column& column : columns) {
    char* const field = static_cast<char*>(record) + column.offset;
    if (column.reading == Reading::kText) {
      extract_str_column_from_result(result_, column.name, field, column.size);
    } else if (column.size == sizeof(uint64_t)) {
      read_number<uint64_t>(column, field, [&](uint64_t* value) {
        return extract_uint64_column_from_result(result_, column.name, value);
      });
    } else {
      read_number<uint32_t>(column, field, [&](uint32_t* value) {
        return extract_uint_column_from_result(result_, column.name, value);
      });
    }
  }
}

}  // namespace zymdb
