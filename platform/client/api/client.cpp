// The client's operations on handles: arguments are checked here, the work is done elsewhere.
#include <algorithm>
#include <cstring>

#include "client/api/local_database.h"
#include "client/dialect/content_values.h"
#include "client/engine/creation.h"
#include "client/guarded.h"
#include "client/result/result_pool.h"
#include "client/session/handles.h"
#include "client/session/lease.h"
#include "controller/database_client.h"
#include "zymdb_platform.h"

using zymdb::client::Change;
using zymdb::client::guarded;
using zymdb::client::guarded_pointer;
using zymdb::client::Lease;
using zymdb::client::note_failure;
using zymdb::client::PooledResult;
using zymdb::client::report_failure;
using zymdb::client::Request;
using zymdb::client::take_result;

struct zym_db_content_values_t final : zymdb::client::ContentValues {};

namespace {

std::span<const _zym_db_param_t> params_of(const _zym_db_param_t* params, int count) {
  if (params == nullptr || count <= 0) return {};
  return {params, static_cast<size_t>(count)};
}

// Runs an operation on the calling thread's session.
template <class Operation>
int run(_zym_db_handle_t* handle, Operation operation) {
  return guarded([&] {
    Lease lease;
    const int status = lease.acquire(handle);
    return status != 0 ? status : operation(lease);
  });
}

int run_query(_zym_db_handle_t* handle, const Request& request, zym_db_result_t** result) {
  return run(handle, [&](Lease& lease) {
    PooledResult rows = take_result();
    const int status = lease.query(request, *rows);
    if (status == 0) *result = rows.release();
    return status;
  });
}

int run_change(_zym_db_handle_t* handle, const Request& request, Change& change) {
  return run(handle, [&](Lease& lease) { return lease.change(request, change); });
}

int run_transaction(_zym_db_handle_t* handle, int (Lease::*step)()) {
  if (handle == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return run(handle, [&](Lease& lease) { return (lease.*step)(); });
}

_zym_db_handle_t* open_local(const char* database,
                             _zym_db_handle_t* (*open)(const zymdb::client::DataSource&)) {
  zymdb::client::DataSource source;
  std::string error;
  if (zymdb::client::locate_database(database, source, error)) return open(source);
  report_failure(ZYM_DB_STATUS_NO_DB, "cannot open %s: %s", database, error.c_str());
  return nullptr;
}

Request change_request(Request::Kind kind, const char* table, const zym_db_content_values_t* values,
                       const char* where, std::span<const _zym_db_param_t> params) {
  Request request;
  request.kind = kind;
  request.table = table;
  request.values = values;
  request.where = where;
  request.params = params;
  return request;
}

}  // namespace

_zym_db_handle_t* get_dmdb_handle() {
  return guarded_pointer([] { return zymdb::client::shared_handle(); });
}

_zym_db_handle_t* zym_db_open(const char* host, const char*, const char*, const char* database, int) {
  if (host == nullptr || database == nullptr) {
    note_failure(ZYM_DB_STATUS_INVALID_PARAM);
    return nullptr;
  }
  return guarded_pointer([&] {
    const bool is_local = std::strcmp(host, "localhost") == 0;
    if (is_local) return open_local(database, zymdb::client::open_handle);
    report_failure(ZYM_DB_STATUS_NO_DB, "cannot open %s: no database server at %s", database, host);
    return static_cast<_zym_db_handle_t*>(nullptr);
  });
}

_zym_db_handle_t* zymdb::client::kept_properties() {
  return guarded_pointer([] { return open_local("propertiesdb", zymdb::client::kept_handle); });
}

void zym_db_allow_creation(int allowed) {
  zymdb::client::allow_creation(allowed != 0);
}

int zym_db_close(_zym_db_handle_t* handle) {
  if (handle == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return guarded(
      [&]() -> int { return zymdb::client::close_handle(handle) ? 0 : note_failure(ZYM_DB_STATUS_NO_DB); });
}

int zym_db_query(_zym_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zym_db_param_t* params, int nparams, int,
                 zym_db_result_t** result) {
  const bool listed = columns != nullptr && ncolumns > 0;
  if (handle == nullptr || table == nullptr || result == nullptr)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  if (!listed && ncolumns != 0) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  Request request;
  request.table = table;
  if (listed) request.columns = {columns, static_cast<size_t>(ncolumns)};
  if (std::count(request.columns.begin(), request.columns.end(), nullptr) != 0)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  request.where = where;
  request.params = params_of(params, nparams);
  return run_query(handle, request, result);
}

int zym_db_raw_query(_zym_db_handle_t* handle, const char* sql, int size, zym_db_result_t** result) {
  if (handle == nullptr || sql == nullptr || size <= 0 || result == nullptr)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  Request request;
  request.kind = Request::Kind::kRaw;
  request.sql = {sql, strnlen(sql, static_cast<size_t>(size))};
  return run_query(handle, request, result);
}

int zym_db_insert(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values, int,
                  int64_t* id) {
  if (handle == nullptr || table == nullptr || values == nullptr)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  Change change;
  const int status =
      run_change(handle, change_request(Request::Kind::kInsert, table, values, nullptr, {}), change);
  if (status == 0 && id != nullptr) *id = change.id;
  return status;
}

int zym_db_update(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values,
                  const char* where, const _zym_db_param_t* params, int nparams, int64_t* changed) {
  if (handle == nullptr || table == nullptr || values == nullptr)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  Change change;
  const int status = run_change(
      handle, change_request(Request::Kind::kUpdate, table, values, where, params_of(params, nparams)),
      change);
  if (status == 0 && changed != nullptr) *changed = change.rows;
  return status;
}

int zym_db_delete(_zym_db_handle_t* handle, const char* table, const char* where,
                  const _zym_db_param_t* params, int nparams, int64_t* count) {
  if (handle == nullptr || table == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  Change change;
  const int status = run_change(
      handle, change_request(Request::Kind::kDelete, table, nullptr, where, params_of(params, nparams)),
      change);
  if (status == 0 && count != nullptr) *count = change.rows;
  return status;
}

int zym_db_begin(_zym_db_handle_t* handle) {
  return run_transaction(handle, &Lease::begin);
}
int zym_db_commit(_zym_db_handle_t* handle) {
  return run_transaction(handle, &Lease::commit);
}
int zym_db_rollback(_zym_db_handle_t* handle) {
  return run_transaction(handle, &Lease::rollback);
}

int zym_db_generation(_zym_db_handle_t* handle, uint64_t* generation) {
  if (handle == nullptr || generation == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return run(handle, [&](Lease& lease) { return lease.generation(*generation); });
}

int zym_db_snapshot(_zym_db_handle_t* handle, const char* path, uint64_t* generation) {
  if (handle == nullptr || path == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  uint64_t copied = 0;
  const int status = run(handle, [&](Lease& lease) { return lease.save_copy(path, copied); });
  if (status == 0 && generation != nullptr) *generation = copied;
  return status;
}

int zym_db_rewind(_zym_db_handle_t* handle, uint64_t generation) {
  if (handle == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return run(handle, [&](Lease& lease) { return lease.rewind(generation); });
}

zym_db_content_values_t* zym_db_get_content_values(_zym_db_handle_t* handle) {
  if (handle == nullptr) {
    note_failure(ZYM_DB_STATUS_INVALID_PARAM);
    return nullptr;
  }
  return guarded_pointer([] { return new zym_db_content_values_t; });
}

int zym_db_content_clear(zym_db_content_values_t* values) {
  if (values == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  values->clear();
  return 0;
}

int zym_db_content_put_text(zym_db_content_values_t* values, const char* column, const char* value) {
  if (values == nullptr || column == nullptr || value == nullptr)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return guarded([&] {
    values->put_text(column, value);
    return 0;
  });
}

int zym_db_content_put_blob(zym_db_content_values_t* values, const char* column, const void* data, int size) {
  if (values == nullptr || column == nullptr || data == nullptr || size < 0)
    return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return guarded([&] {
    values->put_blob(column, {static_cast<const char*>(data), static_cast<size_t>(size)});
    return 0;
  });
}

static int put_integer(zym_db_content_values_t* values, const char* column, int64_t value) {
  if (values == nullptr || column == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return guarded([&] {
    values->put_integer(column, value);
    return 0;
  });
}

int zym_db_content_put_int(zym_db_content_values_t* values, const char* column, int value) {
  return put_integer(values, column, value);
}

int zym_db_content_put_uint(zym_db_content_values_t* values, const char* column, unsigned int value) {
  return put_integer(values, column, value);
}

int zym_db_content_put_uchar(zym_db_content_values_t* values, const char* column, unsigned char value) {
  return put_integer(values, column, value);
}

int zym_db_content_put_short_uint(zym_db_content_values_t* values, const char* column, unsigned short value) {
  return put_integer(values, column, value);
}

int zym_db_content_put_null(zym_db_content_values_t* values, const char* column) {
  if (values == nullptr || column == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  return guarded([&] {
    values->put_null(column);
    return 0;
  });
}

int zym_db_free_content_values(zym_db_content_values_t* values) {
  if (values == nullptr) return note_failure(ZYM_DB_STATUS_INVALID_PARAM);
  delete values;
  return 0;
}
