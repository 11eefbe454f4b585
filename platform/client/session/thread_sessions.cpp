#include "client/session/thread_sessions.h"

#include <algorithm>

#include "client/per_thread.h"
#include "client/session/registry.h"

namespace zymdb::client {

ThreadSessions* ThreadSessions::of_thread() {
  return PerThread<ThreadSessions>::get();
}

ThreadSessions::~ThreadSessions() {
  for (const auto& session : sessions_) session->close();
}

std::shared_ptr<ThreadSession> ThreadSessions::get(_zym_db_handle_t* handle) {
  const auto known = std::find_if(sessions_.begin(), sessions_.end(),
                                  [&](const auto& each) { return each->database.get() == handle; });
  if (known != sessions_.end() && !(*known)->closed) return *known;
  std::erase_if(sessions_, [](const auto& each) { return each->closed.load(); });
  const auto database = Registry::instance().find(handle);
  if (database == nullptr) return nullptr;
  auto session = Database::join(database);
  if (session != nullptr) sessions_.push_back(session);
  return session;
}

}  // namespace zymdb::client
