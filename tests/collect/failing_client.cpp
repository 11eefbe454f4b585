#include "collect/failing_client.h"

#include <dlfcn.h>

#include <map>
#include <string_view>

#include "controller/database_client.h"
#include "zymdb_platform.h"

namespace {

size_t failing = 0;
size_t calls = 0;
std::string failed;
std::map<std::string, size_t> calls_by_name;

constexpr int kBusy = 40;
size_t overtaken = 0;        // transactions, still
size_t overtaken_at = 0;     // which call of each
bool was_overtaken = false;  // what the client then says of itself
size_t calls_in_begun = 0;   // 0: none is begun

bool is_overtaken() {
  return overtaken != 0 && calls_in_begun != 0 && calls_in_begun >= overtaken_at;
}

bool fails(const char* name) {
  if (calls_in_begun != 0) ++calls_in_begun;
  if (std::string_view(name) == "zym_db_begin") calls_in_begun = 1;
  if (is_overtaken()) return true;
  ++calls_by_name[name];
  if (++calls != failing) return false;
  failed = name;
  return true;
}

template <class Call>
Call* real(const char* name) {
  return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace zymdb::collect {

void fail_call(size_t number) {
  failing = number;
  calls = 0;
  failed.clear();
  calls_by_name.clear();
}
void overtake(size_t transactions, size_t call) {
  overtaken = transactions;
  overtaken_at = call;
}
size_t calls_so_far() {
  return calls;
}
std::string failed_call() {
  return failed;
}
size_t calls_of(const std::string& name) {
  return calls_by_name[name];
}

}  // namespace zymdb::collect

// Each passes its call on, unless it is that one's turn to fail.
#define CLIENT_CALL(Result, failure, name, parameters, arguments)                             \
  extern "C" [[gnu::visibility("default")]] Result name parameters {                          \
    static const auto call = real<decltype(name)>(#name);                                     \
    return fails(#name) ? static_cast<Result>(failure) : static_cast<Result>(call arguments); \
  }

using Handle = _zym_db_handle_t;
using Values = zym_db_content_values_t;
using Result = zym_db_result_t;
using Param = _zym_db_param_t;

CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_begin, (Handle * handle), (handle))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_query,
            (Handle * handle, const char* table, const char* const* columns, int ncolumns, const char* where,
             const Param* params, int nparams, int reserved, Result** result),
            (handle, table, columns, ncolumns, where, params, nparams, reserved, result))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_raw_query,
            (Handle * handle, const char* sql, int size, Result** result), (handle, sql, size, result))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_result_step, (Result * result), (result))
CLIENT_CALL(Values*, nullptr, zym_db_get_content_values, (Handle * handle), (handle))
CLIENT_CALL(int, ZYM_DB_STATUS_NO_MEMORY, zym_db_content_put_text,
            (Values * values, const char* column, const char* value), (values, column, value))
CLIENT_CALL(int, ZYM_DB_STATUS_NO_MEMORY, zym_db_content_put_uint,
            (Values * values, const char* column, unsigned int value), (values, column, value))
CLIENT_CALL(int, ZYM_DB_STATUS_NO_MEMORY, zym_db_content_put_int,
            (Values * values, const char* column, int value), (values, column, value))
CLIENT_CALL(int, ZYM_DB_STATUS_NO_MEMORY, zym_db_content_put_null, (Values * values, const char* column),
            (values, column))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_insert,
            (Handle * handle, const char* table, const Values* values, int reserved, int64_t* id),
            (handle, table, values, reserved, id))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_update,
            (Handle * handle, const char* table, const Values* values, const char* where, const Param* params,
             int nparams, int64_t* changed),
            (handle, table, values, where, params, nparams, changed))
CLIENT_CALL(int, ZYM_DB_STATUS_ERROR, zym_db_delete,
            (Handle * handle, const char* table, const char* where, const Param* params, int nparams,
             int64_t* count),
            (handle, table, where, params, nparams, count))

// A commit that fails has written nothing and leaves no transaction open.
extern "C" [[gnu::visibility("default")]] int zym_db_commit(Handle* handle) {
  static const auto call = real<decltype(zym_db_commit)>("zym_db_commit");
  if (!fails("zym_db_commit")) {
    calls_in_begun = 0;
    return call(handle);
  }
  const int status = is_overtaken() ? kBusy : ZYM_DB_STATUS_ERROR;
  zym_db_rollback(handle);
  return status;
}

extern "C" [[gnu::visibility("default")]] int zym_db_rollback(Handle* handle) {
  static const auto call = real<decltype(zym_db_rollback)>("zym_db_rollback");
  if (is_overtaken()) {
    --overtaken;
    was_overtaken = true;
  }
  calls_in_begun = 0;
  return call(handle);
}

extern "C" [[gnu::visibility("default")]] void zym_db_clear_error() {
  static const auto call = real<decltype(zym_db_clear_error)>("zym_db_clear_error");
  was_overtaken = false;
  call();
}

extern "C" [[gnu::visibility("default")]] const char* zym_db_last_error(int* status) {
  static const auto call = real<decltype(zym_db_last_error)>("zym_db_last_error");
  if (!was_overtaken) return call(status);
  if (status != nullptr) *status = kBusy;
  return "another writer was first";
}
