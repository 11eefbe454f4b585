// Each thread's sessions with the open databases.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_THREAD_SESSIONS_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_THREAD_SESSIONS_H

#include <memory>
#include <vector>

#include "client/session/database.h"

namespace zymdb::client {

// Usually one.
class ThreadSessions {
 public:
  // The calling thread's; null once it ends.
  static ThreadSessions* of_thread();

  ThreadSessions() = default;
  ~ThreadSessions();
  ThreadSessions(const ThreadSessions&) = delete;
  ThreadSessions& operator=(const ThreadSessions&) = delete;

  // Null when the handle is not open.
  std::shared_ptr<ThreadSession> get(_zym_db_handle_t* handle);

 private:
  std::vector<std::shared_ptr<ThreadSession>> sessions_;
};

}  // namespace zymdb::client

#endif
