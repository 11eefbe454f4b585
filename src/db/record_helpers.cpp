#include <exception>
#include <string>

#include "controller/database_client.h"
#include "controller/ruvo_log.h"
#include "db/query.h"

using zymdb::Query;

namespace {

// The row's own condition: its id (the low word of it), and where given the caller's.
std::string address_of_row(int64_t id, const char* filter) {
  std::string address = "_id=" + std::to_string(static_cast<uint32_t>(id));
  if (filter != nullptr) address.append(" AND (").append(filter).append(")");
  return address;
}

void log_failure(const char* what, const char* table, const char* filter) {
  ruvo_log::logErr("%s", what);
  ruvo_log::logErr("table=%s", table);
  ruvo_log::logErr("filter=%s", filter);
}

}  // namespace

int64_t find_db_record(_zym_db_handle_t* handle, const char* table, const char* where) {
  if (handle == nullptr || table == nullptr || where == nullptr) return -1;

  Query query(handle, table, {"_id"}, where);
  if (!query.has_result()) {
    query.release();
    log_failure("Failed to find record:", table, where);
    return -1;
  }
  if (query.step() != ZYM_DB_STATUS_ROW) return 0;
  return query.read_or(0, int64_t{-1});
}

int64_t insert_db_record(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values) {
  if (handle == nullptr || table == nullptr || values == nullptr) return -1;

  int64_t id = 0;
  const int status = zym_db_insert(handle, table, values, 0, &id);
  if (status == ZYM_DB_STATUS_OK) return id;
  ruvo_log::logErr("Failed to insert record: %s", zym_db_get_error_str(status));
  return -1;
}

int64_t update_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                         const zym_db_content_values_t* values, const char* filter) try {
  if (handle == nullptr || table == nullptr || where == nullptr || values == nullptr) return -1;

  const int64_t id = find_db_record(handle, table, where);
  if (id < 1) return id;

  const std::string address = address_of_row(id, filter);
  const int status = zym_db_update(handle, table, values, address.c_str(), nullptr, 0, nullptr);
  if (status == ZYM_DB_STATUS_OK) return id;
  log_failure("Failed to update record:", table, address.c_str());
  return -1;
} catch (const std::exception&) {
  return -1;
}

int64_t insert_or_update_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                                   const zym_db_content_values_t* values, const char* filter) {
  if (handle == nullptr || table == nullptr || where == nullptr || values == nullptr) return -1;

  int64_t id = update_db_record(handle, table, where, values, filter);
  if (id == 0) id = insert_db_record(handle, table, values);
  if (id >= 1) return id;
  ruvo_log::logErr("insert/update record failed: table=%s, where=%s", table, where);
  ruvo_log::logErr("insert/update record failed: filter=%s", filter);
  return id;
}

int delete_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                     const _zym_db_param_t* params, int nparams) {
  if (handle == nullptr || table == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  int64_t count = 0;
  const int status = zym_db_delete(handle, table, where, params, nparams, &count);
  const char* const filter = where != nullptr ? where : "null";
  if (status != ZYM_DB_STATUS_OK) {
    ruvo_log::logErr("failed to delete db records");
    ruvo_log::logErr("table=%s, where=%s", table, filter);
  } else if (count != 0) {
    ruvo_log::logInfo("Delete from %s, %s\n", table, filter);
  }
  return status;
}

int put_text_value(zym_db_content_values_t* values, const char* column, unsigned char* text) {
  if (text[0] == 0) return zym_db_content_put_null(values, column);
  return zym_db_content_put_text(values, column, reinterpret_cast<const char*>(text));
}
