#include "controller/bios_configuration.h"

#include <atomic>
#include <span>

#include "client/api/local_database.h"
#include "client/guarded.h"
#include "client/status.h"
#include "zymdb_platform.h"

namespace {

using namespace zymdb;
using namespace zymdb::client;

using Requests = std::span<cmr_attribute_request_t>;

std::atomic<int> sessions{0};

// While no attribute is listed, the firmware's list is not known and every name is accepted.
int read_listed(_zym_db_handle_t* handle, bool& listed) {
  zymdb::ResultPtr rows;
  const int status = select(handle, "biosAttribute", "_id", "1 LIMIT 1", rows);
  listed = zym_db_result_row_count(rows.get()) != 0;
  return status;
}

int check(_zym_db_handle_t* handle, const cmr_attribute_request_t& request, bool listed) {
  if (request.name == nullptr || request.name[0] == 0 || request.value == nullptr)
    return ZYM_DB_STATUS_INVALID_PARAM;
  if (!listed) return 0;
  zymdb::ResultPtr rows;
  const int status = select(handle, "biosAttribute", "_id", equals("name", request.name), rows);
  if (status != 0) return status;
  return zym_db_result_row_count(rows.get()) != 0 ? 0 : ZYM_DB_STATUS_NOT_FOUND;
}

int keep(_zym_db_handle_t* handle, const cmr_attribute_request_t& request) {
  const ValuesPtr values(zym_db_get_content_values(handle));
  if (values == nullptr) return ZYM_DB_STATUS_NO_MEMORY;
  int status = zym_db_content_put_text(values.get(), "name", request.name);
  if (status == 0) status = zym_db_content_put_uint(values.get(), "kind", request.kind);
  if (status == 0) status = zym_db_content_put_text(values.get(), "value", request.value);
  if (status != 0) return status;
  int64_t changed = 0;
  const std::string filter = equals("name", request.name);
  status = zym_db_update(handle, "biosPendingValue", values.get(), filter.c_str(), nullptr, 0, &changed);
  if (status != 0 || changed != 0) return status;
  return zym_db_insert(handle, "biosPendingValue", values.get(), 0, nullptr);
}

// Nothing was kept: no request may look accepted.
int refuse_all(Requests requests, int status) {
  for (cmr_attribute_request_t& request : requests) {
    if (request.status == 0) request.status = static_cast<uint32_t>(status);
  }
  return status;
}

// Every request gets its own outcome; the first failure is the set's.
int keep_all(_zym_db_handle_t* handle, Requests requests) {
  bool listed = false;
  if (const int status = read_listed(handle, listed)) return refuse_all(requests, status);
  int result = 0;
  for (cmr_attribute_request_t& request : requests) {
    const int status = guarded([&] {
      const int refused = check(handle, request, listed);
      return refused != 0 ? refused : keep(handle, request);
    });
    request.status = static_cast<uint32_t>(status);
    if (result == 0) result = status;
  }
  return result;
}

// The accepted values become durable together.
int set_all(_zym_db_handle_t* handle, Requests requests) {
  if (handle == nullptr) return refuse_all(requests, ZYM_DB_STATUS_NO_DB);
  if (const int status = zym_db_begin(handle)) return refuse_all(requests, status);
  const int result = keep_all(handle, requests);
  const int status = zym_db_commit(handle);
  return status != 0 ? refuse_all(requests, status) : result;
}

}  // namespace

int cmr_api_initialize() {
  sessions.fetch_add(1);
  return 0;
}

int cmr_set_bios_attribute_value(cmr_attribute_request_t* requests, unsigned int count) {
  if (requests == nullptr && count != 0) return ZYM_DB_STATUS_INVALID_PARAM;
  const Requests all(requests, count);
  if (sessions.load() == 0) return refuse_all(all, ZYM_DB_STATUS_ERROR);
  if (count == 0) return 0;
  return guarded([&] { return set_all(kept_properties(), all); });
}

int cmr_api_uninitialize() {
  int open = sessions.load();
  while (open > 0 && !sessions.compare_exchange_weak(open, open - 1)) {
  }
  return open > 0 ? 0 : ZYM_DB_STATUS_ERROR;
}
