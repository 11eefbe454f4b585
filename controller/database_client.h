/**
 * The inventory database client, which a controller provides. The library imports these operations and never
 * contains them: whoever links a process chooses the client, and a program that defines them is one.
 *
 * Conventions:
 *
 *  1. Statuses. Every operation answers a code of zymdb_db.h unless its type says otherwise. Codes of a
 * client's own are passed to the library's callers unchanged.
 *  2. Parameters that mean the same everywhere. `handle`: of get_dmdb_handle or zym_db_open. `table`: a
 * table's name. `result`: of a query, not freed yet. `values`: a value set, not released yet. `column`: an
 * index or a name, as 4 says. `value`: what a read sets or a put stores. `params`, `nparams`: the values of a
 * filter's "?", in order, and how many there are; null with 0 for none. More than there are "?" are ignored.
 *  3. Null arguments. The library passes null only where an operation says so. A client may answer misuse
 * with ZYM_DB_STATUS_INVALID_PARAM (3); it is never relied on.
 *  4. Columns. Indices count from 0 in the order of the query's column list. Texts are NUL-terminated.
 *  5. Filters. The text after WHERE, without that word. Values stand between single or double quotes and are
 *     not escaped; a bare word that is neither a number, a keyword, a function nor a column of the
 * statement's tables is a text, and so is any bare word or number that is compared with a text column.
 *  6. Ownership. What an operation hands out stays the client's and is given back by the operation named
 * there. Arguments are copied: they need not outlive the call.
 *  7. Threads. A handle serves any number of threads at once. A result or value set belongs to one thread.
 *  8. Failures. No exception leaves an operation.
 */
#ifndef ZYMDB_CONTROLLER_DATABASE_CLIENT_H
#define ZYMDB_CONTROLLER_DATABASE_CLIENT_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A query's rows and a cursor, which stands before the first row at the beginning. */
struct zym_db_result_t;
typedef struct zym_db_result_t zym_db_result_t;

/* ---- Connections */

/**
 * The shared handle of the inventory database. Its users never close it.
 *
 * @return the same handle at every call; null while the database is not available.
 */
_zym_db_handle_t* get_dmdb_handle(void);

/**
 * Opens a connection to another database of the controller.
 *
 * @param host      the library passes "localhost".
 * @param user      the library passes "root".
 * @param password  the library passes "".
 * @param database  the library passes "propertiesdb".
 * @param flags     0.
 * @return a handle to be closed with zym_db_close; null when the database cannot be opened.
 */
_zym_db_handle_t* zym_db_open(const char* host, const char* user, const char* password, const char* database,
                              int flags);

/** Closes a handle of zym_db_open. Results that it gave may still be read and are freed as ever. */
int zym_db_close(_zym_db_handle_t* handle);

/* ---- Queries */

/**
 * Selects rows of a table.
 *
 * @param columns   names or aggregates ("count(*)", "sum(x)", "DISTINCT x"), `ncolumns` of them. Null with 0
 *                  selects every column; the result is then read by name.
 * @param where     the filter; null for all rows.
 * @param reserved  0.
 * @param result    set on success to a result to be freed with zym_db_free_result, or left as it was where
 * there is none; left as it was on failure. Callers preset it to null.
 */
int zym_db_query(_zym_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zym_db_param_t* params, int nparams, int reserved,
                 zym_db_result_t** result);

/**
 * Runs one SELECT statement written out in full.
 *
 * @param sql     the statement; it may end in ";".
 * @param size    the size in bytes of the buffer that holds it: the statement ends there at the latest.
 * @param result  as in zym_db_query.
 */
int zym_db_raw_query(_zym_db_handle_t* handle, const char* sql, int size, zym_db_result_t** result);

/* ---- Results */

/** @return ZYM_DB_STATUS_ROW (9) once the cursor stands on the next row, ZYM_DB_STATUS_DONE (10) after the
 * last, another code on failure. */
int zym_db_result_step(zym_db_result_t* result);

/** @return the number of rows, wherever the cursor stands; not a status. */
unsigned int zym_db_result_row_count(zym_db_result_t* result);

/** Puts the cursor back before the first row. */
int zym_db_result_reset(zym_db_result_t* result);

/*
 * Numbers of the current row. Each answers 0 with the low bits of the number that its type has room for in
 * `value`, or nonzero, leaving `value` as it was, when the column is NULL, no number, or not there. An
 * aggregate over no rows (MIN, MAX or SUM of nothing) reads as 0.
 */

/** Reads an unsigned 32-bit number. */
int zym_db_result_column_uint(zym_db_result_t* result, int column, unsigned int* value);
/** Reads a signed 32-bit number. */
int zym_db_result_column_int(zym_db_result_t* result, int column, int* value);
/** Reads an unsigned 64-bit number. */
int zym_db_result_column_uint64(zym_db_result_t* result, int column, uint64_t* value);
/** Reads a signed 64-bit number. */
int zym_db_result_column_int64(zym_db_result_t* result, int column, int64_t* value);
/** Reads an unsigned 8-bit number. */
int zym_db_result_column_uchar(zym_db_result_t* result, int column, unsigned char* value);
/** Reads an unsigned 16-bit number. */
int zym_db_result_column_short_uint(zym_db_result_t* result, int column, unsigned short* value);

/**
 * Copies a text of the current row; a number gives its decimal text.
 *
 * @param text  always NUL-terminated; empty where the column is NULL, bytes, or not there.
 * @param size  the size of `text` in bytes, at least 1; longer texts are cut to `size` - 1, which is a
 * success.
 */
int zym_db_result_column_text(zym_db_result_t* result, int column, char* text, int size);

/** Copies up to `size` bytes of a column of bytes or text to `data`; what is beyond them is left as it was.
 */
int zym_db_result_column_blob(zym_db_result_t* result, int column, void* data, int size);

/** Sets `length` to the size of the column's value in bytes; nonzero, leaving it as it was, for NULL. */
int zym_db_result_column_bytes(zym_db_result_t* result, int column, int* length);

/** Sets `is_null` to 1 or 0. */
int zym_db_result_column_is_null(zym_db_result_t* result, int column, int* is_null);

/** As zym_db_result_column_uint, by the column's name. */
int extract_uint_column_from_result(zym_db_result_t* result, const char* column, unsigned int* value);
/** As zym_db_result_column_uint64, by the column's name. */
int extract_uint64_column_from_result(zym_db_result_t* result, const char* column, uint64_t* value);
/** As zym_db_result_column_text, by the column's name. */
int extract_str_column_from_result(zym_db_result_t* result, const char* column, char* text, int size);

/** Releases a result. */
int zym_db_free_result(zym_db_result_t* result);

/* ---- Value sets */

/**
 * Makes an empty value set.
 *
 * @return a set to be released with zym_db_free_content_values; null when there is no memory for it.
 */
zym_db_content_values_t* zym_db_get_content_values(_zym_db_handle_t* handle);

/** Removes all pairs. */
int zym_db_content_clear(zym_db_content_values_t* values);

/* Each adds one pair; a later value of a column takes the place of the earlier one. Whether the table has
 * such a column is found when the set is written. */

/** Adds a text, which is copied. */
int zym_db_content_put_text(zym_db_content_values_t* values, const char* column, const char* value);
/** Adds a signed 32-bit number. */
int zym_db_content_put_int(zym_db_content_values_t* values, const char* column, int value);
/** Adds an unsigned 32-bit number. */
int zym_db_content_put_uint(zym_db_content_values_t* values, const char* column, unsigned int value);
/** Adds an unsigned 8-bit number. */
int zym_db_content_put_uchar(zym_db_content_values_t* values, const char* column, unsigned char value);
/** Adds an unsigned 16-bit number. */
int zym_db_content_put_short_uint(zym_db_content_values_t* values, const char* column, unsigned short value);
/** Adds a NULL. */
int zym_db_content_put_null(zym_db_content_values_t* values, const char* column);

/** Releases a value set. */
int zym_db_free_content_values(zym_db_content_values_t* values);

/* ---- Changes */

/**
 * Inserts one row.
 *
 * @param reserved  0.
 * @param id        set to the new row's "_id" on success; may be null.
 */
int zym_db_insert(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  int reserved, int64_t* id);

/**
 * Writes columns of all rows that match. An empty value set changes nothing and is a success.
 *
 * @param where    a condition; null for all rows.
 * @param changed  set to the number of matching rows on success; may be null.
 */
int zym_db_update(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  const char* where, const _zym_db_param_t* params, int nparams, int64_t* changed);

/**
 * Deletes the rows that match.
 *
 * @param where   a condition; null for all rows.
 * @param count   set to the number of deleted rows on success; may be null.
 */
int zym_db_delete(_zym_db_handle_t* handle, const char* table, const char* where,
                  const _zym_db_param_t* params, int nparams, int64_t* count);

/** @return a static text that describes `status`, also one of the client's own; never null. */
const char* zym_db_get_error_str(int status);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
