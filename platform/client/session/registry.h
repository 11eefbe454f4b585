// The open handles of the process.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_REGISTRY_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_REGISTRY_H

#include <atomic>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "client/session/database.h"

namespace zymdb::client {

// Never destroyed: threads may outlive the statics of the process.
class Registry {
 public:
  static Registry& instance();

  void add(const std::shared_ptr<_zym_db_handle_t>& handle);
  // Null for what is no open handle.
  std::shared_ptr<_zym_db_handle_t> find(_zym_db_handle_t* handle);
  // False for what is no open handle: another thread may have been quicker.
  bool close(_zym_db_handle_t* handle);

  // Between these two no handle is opened, closed or joined by a thread.
  void stand_still();
  void go_on();

  // In a child process, for the owner of mutex(): the writers inside, if any, stayed in the parent.
  void reset_writers();
  std::mutex& mutex() { return mutex_; }

  std::mutex opening;  // of these two
  std::atomic<_zym_db_handle_t*> shared{nullptr};
  _zym_db_handle_t* kept = nullptr;  // of the properties; for the owner of `opening`

 private:
  Registry() = default;

  std::mutex mutex_;
  std::unordered_map<_zym_db_handle_t*, std::shared_ptr<_zym_db_handle_t>> handles_;
};

}  // namespace zymdb::client

#endif
