/* A database client over rows in memory: all that controller/database_client.h asks for, in C11. Statements
 * written out in full it does not know: operations that need them answer its status, 1. */
#include <controller/database_client.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "memory_table.h"

/* There is one database, and one lock around it. */
static rows stored;
static int64_t last_id;
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;

struct _zym_db_handle_t {
  int unused;
};
static _zym_db_handle_t the_handle;

struct zym_db_content_values_t {
  row values;
};

/* Copies of the rows that were found, and for each column of the query its name and whether it is a sum. */
struct zym_db_result_t {
  rows found;
  size_t next; /* the row after the current one */
  int ncolumns;
  struct {
    char name[NAME_SIZE];
    enum { PLAIN, SUM, COUNT } kind;
  } columns[64];
};

/* ---- Connections */

_zym_db_handle_t* get_dmdb_handle(void) {
  return &the_handle;
}

_zym_db_handle_t* zym_db_open(const char* host, const char* user, const char* password, const char* database,
                              int flags) {
  (void)host, (void)user, (void)password, (void)database, (void)flags;
  return &the_handle;
}

int zym_db_close(_zym_db_handle_t* handle) {
  (void)handle;
  return ZYM_DB_STATUS_OK;
}

/* ---- Queries */

static bool name_column(zym_db_result_t* result, const char* column) {
  if (result->ncolumns == (int)(sizeof result->columns / sizeof result->columns[0])) return false;
  const int at = result->ncolumns++;
  result->columns[at].kind = PLAIN;
  if (sscanf(column, "sum(%63[^)])", result->columns[at].name) == 1)
    result->columns[at].kind = SUM;
  else if (strcmp(column, "count(*)") == 0)
    result->columns[at].kind = COUNT;
  else
    snprintf(result->columns[at].name, NAME_SIZE, "%s", column);
  return true;
}

static int find_rows(zym_db_result_t* result, const char* table, const char* where,
                     const _zym_db_param_t* params, int nparams) {
  int status = ZYM_DB_STATUS_OK;
  pthread_mutex_lock(&lock);
  for (size_t i = 0; i < stored.count && status == ZYM_DB_STATUS_OK; ++i) {
    const int met = meets(&stored.items[i], table, where, params, nparams);
    if (met < 0) status = ZYM_DB_STATUS_ERROR;
    if (met > 0 && !add_row(&result->found, &stored.items[i])) status = ZYM_DB_STATUS_NO_MEMORY;
  }
  pthread_mutex_unlock(&lock);
  return status;
}

int zym_db_query(_zym_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zym_db_param_t* params, int nparams, int reserved,
                 zym_db_result_t** result) {
  (void)handle, (void)reserved;
  zym_db_result_t* const made = calloc(1, sizeof *made);
  if (made == NULL) return ZYM_DB_STATUS_NO_MEMORY;
  int status = ZYM_DB_STATUS_OK;
  for (int i = 0; i < ncolumns; ++i)
    if (!name_column(made, columns[i])) status = ZYM_DB_STATUS_ERROR;
  if (status == ZYM_DB_STATUS_OK) status = find_rows(made, table, where, params, nparams);
  if (status == ZYM_DB_STATUS_OK)
    *result = made;
  else
    zym_db_free_result(made);
  return status;
}

int zym_db_raw_query(_zym_db_handle_t* handle, const char* sql, int size, zym_db_result_t** result) {
  (void)handle, (void)sql, (void)size, (void)result;
  return ZYM_DB_STATUS_ERROR;
}

/* ---- Results */

static bool is_aggregate(const zym_db_result_t* result) {
  return result->ncolumns > 0 && result->columns[0].kind != PLAIN;
}

int zym_db_result_step(zym_db_result_t* result) {
  if (result->next >= zym_db_result_row_count(result)) return ZYM_DB_STATUS_DONE;
  ++result->next;
  return ZYM_DB_STATUS_ROW;
}

unsigned int zym_db_result_row_count(zym_db_result_t* result) {
  return is_aggregate(result) ? 1 : (unsigned int)result->found.count;
}

int zym_db_result_reset(zym_db_result_t* result) {
  result->next = 0;
  return ZYM_DB_STATUS_OK;
}

static int64_t sum_of(const zym_db_result_t* result, const char* column) {
  int64_t sum = 0;
  for (size_t i = 0; i < result->found.count; ++i) {
    const cell* const each = find_cell(&result->found.items[i], column);
    if (each != NULL && each->kind == CELL_NUMBER) sum += each->number;
  }
  return sum;
}

/* The current row's cell; false for NULL and for a column that is not there. */
static bool read_cell(zym_db_result_t* result, const char* column, cell* value) {
  if (result->next == 0 || result->next > result->found.count) return false;
  const cell* const found = find_cell(&result->found.items[result->next - 1], column);
  if (found == NULL || found->kind == CELL_NULL) return false;
  *value = *found;
  return true;
}

static bool read_column(zym_db_result_t* result, int column, cell* value) {
  if (column < 0 || column >= result->ncolumns) return false;
  if (result->columns[column].kind == PLAIN) return read_cell(result, result->columns[column].name, value);
  const bool is_count = result->columns[column].kind == COUNT;
  *value = (cell){.kind = CELL_NUMBER};
  value->number = is_count ? (int64_t)result->found.count : sum_of(result, result->columns[column].name);
  return true;
}

#define NUMBER_READER(name, type)                                                                      \
  int name(zym_db_result_t* result, int column, type* value) {                                         \
    cell found;                                                                                        \
    if (!read_column(result, column, &found) || found.kind != CELL_NUMBER) return ZYM_DB_STATUS_ERROR; \
    *value = (type)found.number;                                                                       \
    return ZYM_DB_STATUS_OK;                                                                           \
  }
NUMBER_READER(zym_db_result_column_uint, unsigned int)
NUMBER_READER(zym_db_result_column_int, int)
NUMBER_READER(zym_db_result_column_uint64, uint64_t)
NUMBER_READER(zym_db_result_column_int64, int64_t)
NUMBER_READER(zym_db_result_column_uchar, unsigned char)
NUMBER_READER(zym_db_result_column_short_uint, unsigned short)

static int copy_text(bool found, const cell* from, char* text, int size) {
  text[0] = '\0';
  if (!found) return ZYM_DB_STATUS_ERROR;
  if (from->kind == CELL_TEXT)
    snprintf(text, (size_t)size, "%s", from->text);
  else
    snprintf(text, (size_t)size, "%lld", (long long)from->number);
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_text(zym_db_result_t* result, int column, char* text, int size) {
  cell found;
  return copy_text(read_column(result, column, &found), &found, text, size);
}

int zym_db_result_column_blob(zym_db_result_t* result, int column, void* data, int size) {
  cell found;
  if (!read_column(result, column, &found) || found.kind != CELL_TEXT) return ZYM_DB_STATUS_ERROR;
  const size_t length = strlen(found.text);
  memcpy(data, found.text, length < (size_t)size ? length : (size_t)size);
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_bytes(zym_db_result_t* result, int column, int* length) {
  cell found;
  if (!read_column(result, column, &found)) return ZYM_DB_STATUS_ERROR;
  *length = found.kind == CELL_TEXT ? (int)strlen(found.text) : (int)sizeof found.number;
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_is_null(zym_db_result_t* result, int column, int* is_null) {
  cell found;
  *is_null = !read_column(result, column, &found);
  return ZYM_DB_STATUS_OK;
}

static int read_named(zym_db_result_t* result, const char* column, int64_t* value) {
  cell found;
  if (!read_cell(result, column, &found) || found.kind != CELL_NUMBER) return ZYM_DB_STATUS_ERROR;
  *value = found.number;
  return ZYM_DB_STATUS_OK;
}

int extract_uint_column_from_result(zym_db_result_t* result, const char* column, unsigned int* value) {
  int64_t number = 0;
  const int status = read_named(result, column, &number);
  if (status == ZYM_DB_STATUS_OK) *value = (unsigned int)number;
  return status;
}

int extract_uint64_column_from_result(zym_db_result_t* result, const char* column, uint64_t* value) {
  int64_t number = 0;
  const int status = read_named(result, column, &number);
  if (status == ZYM_DB_STATUS_OK) *value = (uint64_t)number;
  return status;
}

int extract_str_column_from_result(zym_db_result_t* result, const char* column, char* text, int size) {
  cell found;
  return copy_text(read_cell(result, column, &found), &found, text, size);
}

int zym_db_free_result(zym_db_result_t* result) {
  free_rows(&result->found);
  free(result);
  return ZYM_DB_STATUS_OK;
}

/* ---- Value sets */

zym_db_content_values_t* zym_db_get_content_values(_zym_db_handle_t* handle) {
  (void)handle;
  return calloc(1, sizeof(zym_db_content_values_t));
}

int zym_db_content_clear(zym_db_content_values_t* values) {
  values->values.count = 0;
  return ZYM_DB_STATUS_OK;
}

static int put(zym_db_content_values_t* values, const char* column, cell value) {
  snprintf(value.column, sizeof value.column, "%s", column);
  return set_cell(&values->values, &value) ? ZYM_DB_STATUS_OK : ZYM_DB_STATUS_NO_MEMORY;
}

static int put_number(zym_db_content_values_t* values, const char* column, int64_t number) {
  return put(values, column, (cell){.kind = CELL_NUMBER, .number = number});
}

int zym_db_content_put_text(zym_db_content_values_t* values, const char* column, const char* value) {
  cell text = {.kind = CELL_TEXT};
  snprintf(text.text, sizeof text.text, "%s", value);
  return put(values, column, text);
}
int zym_db_content_put_int(zym_db_content_values_t* values, const char* column, int value) {
  return put_number(values, column, value);
}
int zym_db_content_put_uint(zym_db_content_values_t* values, const char* column, unsigned int value) {
  return put_number(values, column, value);
}
int zym_db_content_put_uchar(zym_db_content_values_t* values, const char* column, unsigned char value) {
  return put_number(values, column, value);
}
int zym_db_content_put_short_uint(zym_db_content_values_t* values, const char* column, unsigned short value) {
  return put_number(values, column, value);
}
int zym_db_content_put_null(zym_db_content_values_t* values, const char* column) {
  return put(values, column, (cell){.kind = CELL_NULL});
}

int zym_db_free_content_values(zym_db_content_values_t* values) {
  free_row(&values->values);
  free(values);
  return ZYM_DB_STATUS_OK;
}

/* ---- Changes */

int zym_db_insert(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  int reserved, int64_t* id) {
  (void)handle, (void)reserved;
  pthread_mutex_lock(&lock);
  bool done = add_row(&stored, &values->values);
  if (done) {
    row* const added = &stored.items[stored.count - 1];
    snprintf(added->table, sizeof added->table, "%s", table);
    done = set_cell(added, &(cell){.column = "_id", .kind = CELL_NUMBER, .number = ++last_id});
    if (id != NULL) *id = last_id;
  }
  pthread_mutex_unlock(&lock);
  return done ? ZYM_DB_STATUS_OK : ZYM_DB_STATUS_NO_MEMORY;
}

static bool overwrite(row* with, const row* values) {
  bool done = true;
  for (size_t i = 0; i < values->count; ++i) done = done && set_cell(with, &values->cells[i]);
  return done;
}

int zym_db_update(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  const char* where, const _zym_db_param_t* params, int nparams, int64_t* changed) {
  (void)handle;
  int64_t count = 0;
  bool done = true;
  pthread_mutex_lock(&lock);
  for (size_t i = 0; i < stored.count && done; ++i) {
    const int met = meets(&stored.items[i], table, where, params, nparams);
    count += met > 0;
    done = met == 0 || (met > 0 && overwrite(&stored.items[i], &values->values));
  }
  pthread_mutex_unlock(&lock);
  if (done && changed != NULL) *changed = count;
  return done ? ZYM_DB_STATUS_OK : ZYM_DB_STATUS_ERROR;
}

int zym_db_delete(_zym_db_handle_t* handle, const char* table, const char* where,
                  const _zym_db_param_t* params, int nparams, int64_t* count) {
  (void)handle;
  size_t kept = 0;
  pthread_mutex_lock(&lock);
  const size_t before = stored.count;
  for (size_t i = 0; i < before; ++i) {
    if (meets(&stored.items[i], table, where, params, nparams) > 0)
      free_row(&stored.items[i]);
    else
      stored.items[kept++] = stored.items[i];
  }
  stored.count = kept;
  pthread_mutex_unlock(&lock);
  if (count != NULL) *count = (int64_t)(before - kept);
  return ZYM_DB_STATUS_OK;
}

const char* zym_db_get_error_str(int status) {
  return status == ZYM_DB_STATUS_OK ? "done" : "failed";
}
