#include "common/transaction.h"

#include <string>
#include <utility>

#include "common/client_objects.h"
#include "platform/zymdb_platform.h"

// Another client in the process may lack them.
extern "C" {
int zym_db_begin(_zym_db_handle_t* handle) __attribute__((weak));
int zym_db_commit(_zym_db_handle_t* handle) __attribute__((weak));
int zym_db_rollback(_zym_db_handle_t* handle) __attribute__((weak));
}

namespace zymdb {
namespace {

bool is_offered() {
  return zym_db_begin != nullptr && zym_db_commit != nullptr && zym_db_rollback != nullptr;
}

void require(int status, const std::string& what) {
  if (status == ZYM_DB_STATUS_OK) return;
  const char* reason = zym_db_get_error_str(status);
  throw DatabaseError(what + " the inventory: " + (reason ? reason : "unknown failure"));
}

}  // namespace

Transaction::Transaction(_zym_db_handle_t* handle) : handle_(handle) {
  if (!is_offered()) return;
  require(zym_db_begin(handle_), "cannot begin a transaction on");
  open_ = true;
}

Transaction::~Transaction() {
  if (open_) zym_db_rollback(handle_);
}

void Transaction::commit() {
  if (std::exchange(open_, false)) require(zym_db_commit(handle_), "cannot commit the changes to");
}

}  // namespace zymdb
