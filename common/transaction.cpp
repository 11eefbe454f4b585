#include "common/transaction.h"

#include <chrono>
#include <string>
#include <thread>
#include <utility>

#include "common/client_extensions.h"
#include "platform/zymdb_platform.h"

// Another client in the process may lack them.
extern "C" {
int zym_db_begin(_zym_db_handle_t* handle) __attribute__((weak));
int zym_db_commit(_zym_db_handle_t* handle) __attribute__((weak));
int zym_db_rollback(_zym_db_handle_t* handle) __attribute__((weak));
}

namespace zymdb {
namespace {

constexpr int kMostTries = 6;
constexpr std::chrono::milliseconds kFirstPause{5};
constexpr int kOvertaken = 40;  // the client's word for it

bool is_offered() {
  return zym_db_begin != nullptr && zym_db_commit != nullptr && zym_db_rollback != nullptr;
}

template <class Failure>
void require(int status, const std::string& what) {
  if (status == ZYM_DB_STATUS_OK) return;
  const char* reason = zym_db_get_error_str(status);
  throw Failure(what + " the inventory: " + (reason ? reason : "unknown failure"));
}

}  // namespace

Transaction::Transaction(_zym_db_handle_t* handle) : handle_(handle) {
  if (!is_offered()) return;
  require<NotBegun>(zym_db_begin(handle_), "cannot begin a transaction on");
  open_ = true;
}

Transaction::~Transaction() {
  if (open_) zym_db_rollback(handle_);
}

void Transaction::commit() {
  if (std::exchange(open_, false))
    require<DatabaseError>(zym_db_commit(handle_), "cannot commit the changes to");
}

// What failed may be anything between the first read and the commit: only the client knows why.
void repeat_overtaken(const std::function<void()>& work) {
  for (int tried = 1;; ++tried) {
    clear_client_error();
    try {
      return work();
    } catch (const NotBegun&) {
      throw;
    } catch (const std::exception&) {
      if (last_client_status() != kOvertaken || tried == kMostTries) throw;
    }
    std::this_thread::sleep_for(kFirstPause * (1 << tried));
  }
}

}  // namespace zymdb
