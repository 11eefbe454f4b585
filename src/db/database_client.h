// The inventory database client, as whoever links a process provides it. The library imports these
// operations and never contains them.
//
// Every operation answers a status of zymdb_db.h unless its type says otherwise; codes of the client that
// the library does not know are passed to the library's callers unchanged. Column indices count from 0 in
// the order of the query's column list.
#ifndef ZYMDB_SRC_DB_DATABASE_CLIENT_H
#define ZYMDB_SRC_DB_DATABASE_CLIENT_H

#include <cstdint>

#include "zymdb_db.h"

struct zym_db_result_t;

extern "C" {

// The shared handle of the inventory database, never closed by its users; null when there is none.
_zym_db_handle_t* get_dmdb_handle(void);

// A private connection to another database on the controller ("localhost"); null when it cannot be opened.
_zym_db_handle_t* zym_db_open(const char* host, const char* user, const char* password, const char* database,
                              int flags);
int zym_db_close(_zym_db_handle_t* handle);

// Rows of `table` that match `where` (null: all). A null `columns` with 0 selects every column, to be read
// by name. The n-th "?" of the filter takes the n-th parameter. `reserved` is 0.
int zym_db_query(_zym_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zym_db_param_t* params, int nparams, int reserved,
                 zym_db_result_t** result);

// A statement written out in full; `size` is the size of the buffer that holds it.
int zym_db_raw_query(_zym_db_handle_t* handle, const char* sql, int size, zym_db_result_t** result);

// ZYM_DB_STATUS_ROW, ZYM_DB_STATUS_DONE, or another code on failure.
int zym_db_result_step(zym_db_result_t* result);
unsigned int zym_db_result_row_count(zym_db_result_t* result);
int zym_db_result_reset(zym_db_result_t* result);

// Nonzero when the column is NULL or of another type.
int zym_db_result_column_uint(zym_db_result_t* result, int column, unsigned int* value);
int zym_db_result_column_int(zym_db_result_t* result, int column, int* value);
int zym_db_result_column_uint64(zym_db_result_t* result, int column, uint64_t* value);
int zym_db_result_column_int64(zym_db_result_t* result, int column, int64_t* value);
int zym_db_result_column_uchar(zym_db_result_t* result, int column, unsigned char* value);
int zym_db_result_column_short_uint(zym_db_result_t* result, int column, unsigned short* value);

// Texts arrive NUL-terminated and cut to `size` - 1 bytes.
int zym_db_result_column_text(zym_db_result_t* result, int column, char* text, int size);
int zym_db_result_column_blob(zym_db_result_t* result, int column, void* data, int size);
int zym_db_result_column_bytes(zym_db_result_t* result, int column, int* length);
int zym_db_result_column_is_null(zym_db_result_t* result, int column, int* is_null);

int extract_uint_column_from_result(zym_db_result_t* result, const char* column, unsigned int* value);
int extract_uint64_column_from_result(zym_db_result_t* result, const char* column, uint64_t* value);
int extract_str_column_from_result(zym_db_result_t* result, const char* column, char* text, int size);

int zym_db_free_result(zym_db_result_t* result);

// A new, empty value set, or null when there is no memory for it.
zym_db_content_values_t* zym_db_get_content_values(_zym_db_handle_t* handle);
int zym_db_content_clear(zym_db_content_values_t* values);
int zym_db_content_put_text(zym_db_content_values_t* values, const char* column, const char* value);
int zym_db_content_put_int(zym_db_content_values_t* values, const char* column, int value);
int zym_db_content_put_uint(zym_db_content_values_t* values, const char* column, unsigned int value);
int zym_db_content_put_uchar(zym_db_content_values_t* values, const char* column, unsigned char value);
int zym_db_content_put_short_uint(zym_db_content_values_t* values, const char* column, unsigned short value);
int zym_db_content_put_null(zym_db_content_values_t* values, const char* column);
int zym_db_free_content_values(zym_db_content_values_t* values);

// `reserved` is 0.
int zym_db_insert(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  int reserved, int64_t* id);
int zym_db_update(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  const char* where, const _zym_db_param_t* params, int nparams, int64_t* changed);
int zym_db_delete(_zym_db_handle_t* handle, const char* table, const char* where,
                  const _zym_db_param_t* params, int nparams, int64_t* count);

// A static text that describes the status.
const char* zym_db_get_error_str(int status);

}  // extern "C"

#endif
