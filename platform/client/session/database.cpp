#include "client/session/database.h"

#include <algorithm>

namespace zymdb::client {

void ThreadSession::close() {
  closed = true;
  set(nullptr);
}

std::shared_ptr<ThreadSession> Database::join(const std::shared_ptr<Database>& database) {
  auto session = std::make_shared<ThreadSession>(database);
  const std::lock_guard lock(database->mutex_);
  if (database->closed_ || database->resting_) return nullptr;
  std::erase_if(database->sessions_, [](const auto& each) { return each.expired(); });
  database->sessions_.push_back(session);
  return session;
}

void Database::close() {
  std::vector<std::weak_ptr<ThreadSession>> ending;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    ending.swap(sessions_);
  }
  for (const auto& each : ending) {
    const auto session = each.lock();
    if (session == nullptr) continue;
    const std::lock_guard lock(session->mutex);
    session->close();
  }
}

bool Database::rest(const ThreadSession& only) {
  const std::lock_guard lock(mutex_);
  bool is_alone = !closed_;
  for_each_session([&](const auto& session) { is_alone = is_alone && session.get() == &only; });
  return is_alone && !resting_.exchange(true);
}

}  // namespace zymdb::client
