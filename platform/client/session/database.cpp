#include "client/session/database.h"

#include <utility>

namespace zymdb::client {

ThreadSession::ThreadSession(std::shared_ptr<Database> owner)
    : database(std::move(owner)),
      session(
          database->source().engine->make_session(database->source(), database->writers(), limits_here())) {}

void ThreadSession::close() {
  closed = true;
  session->close();
}

std::shared_ptr<ThreadSession> Database::join(const std::shared_ptr<Database>& database) {
  auto session = std::make_shared<ThreadSession>(database);
  const std::lock_guard lock(database->mutex_);
  if (database->closed_) return nullptr;
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
    if (const auto session = each.lock()) session->close();
  }
}

}  // namespace zymdb::client
