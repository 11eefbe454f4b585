// A session with a database of a test's own, without a handle.
#ifndef ZYMDB_TESTS_PLATFORM_ENGINE_SESSION_H
#define ZYMDB_TESTS_PLATFORM_ENGINE_SESSION_H

#include <memory>
#include <mutex>
#include <string>

#include "client/engine/sqlite/engine.h"

namespace zymdb::client {

struct OpenedSession {
  std::unique_ptr<Session> session;  // null on failure
  int status = 0;
  std::string error;
};

inline OpenedSession open_session(const DataSource& source, WriterQueue& writers, const Limits& limits = {}) {
  auto session = sqlite::kEngine.make_session(source, writers, limits);
  std::unique_lock lock(session->lock());
  const int status = session->open(lock).status;
  lock.unlock();
  if (status != 0) return {nullptr, status, session->error()};
  return {std::move(session), 0, {}};
}

}  // namespace zymdb::client

#endif
