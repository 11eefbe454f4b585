#include "client/database.h"

#include <algorithm>

namespace zymdb::client {

void ThreadSession::close() {
  closed = true;
  session.reset();
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
  std::vector<std::shared_ptr<ThreadSession>> ending;
  {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    ending = sessions();
  }
  for (const auto& session : ending) {
    const std::lock_guard lock(session->mutex);
    session->close();
  }
}

bool Database::rest(const ThreadSession& only) {
  const std::lock_guard lock(mutex_);
  const auto living = sessions();
  if (closed_ || living.size() != 1 || living.front().get() != &only) return false;
  return !resting_.exchange(true);
}

std::vector<std::shared_ptr<ThreadSession>> Database::sessions() const {
  std::vector<std::shared_ptr<ThreadSession>> living;
  for (const auto& each : sessions_) {
    if (auto session = each.lock()) living.push_back(std::move(session));
  }
  return living;
}

}  // namespace zymdb::client
