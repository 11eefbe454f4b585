#include "client/session/lease.h"

#include <string>
#include <utility>

#include "client/last_error.h"
#include "client/session/forks.h"
#include "client/session/thread_sessions.h"
#include "controller/ruvo_log.h"

namespace zymdb::client {

int Lease::acquire(_zym_db_handle_t* handle) {
  ThreadSessions* const sessions = ThreadSessions::of_thread();
  if (sessions == nullptr) return note_failure(ZYM_DB_STATUS_NO_DB);
  drop_inherited();
  auto found = sessions->get(handle);
  if (found == nullptr) return note_failure(ZYM_DB_STATUS_NO_DB);
  held_ = std::move(found);
  lock_ = std::unique_lock(session().lock());
  if (held_->closed) return note_failure(ZYM_DB_STATUS_NO_DB);
  return session().state(Look::kAtTimes).is_usable() ? 0 : reopen();
}

int Lease::reopen() {
  const Opened opened = session().open(lock_);
  if (held_->closed) {
    // Whoever closed it was too early for this connection.
    lock_.unlock();
    session().close();
    return note_failure(ZYM_DB_STATUS_NO_DB);
  }
  if (opened.status != 0) return report_failure(opened.status, "%s", session().error().c_str());
  const DataSource& source = held_->database->source();
  if (opened.loss != nullptr)
    ruvo_log::logWarn("the %s database %s %s: opened anew", source.schema->name, source.address.c_str(),
                      opened.loss);
  return 0;
}

int Lease::compose(const Request& request) {
  return logged(statement().compose(session().catalog(), request));
}

// A statement's names are those of its session's catalog.
int Lease::recompose(const Request& request) {
  const int status = reopen();
  return status != 0 ? status : compose(request);
}

int Lease::query(const Request& request, Result& result) {
  if (const int status = compose(request)) return status;
  const int status = session().query(statement(), result);
  if (status == 0 || !session().state(Look::kNow).is_to_be_read_again()) return logged(status);
  // It failed on what is the database no longer, or was written meanwhile.
  if (const int failure = recompose(request)) return failure;
  return logged(session().query(statement(), result));
}

// What is read may be a moment old, what is written goes to the database that is there now.
int Lease::change(const Request& request, Change& change) {
  change = {};
  if (const int status = compose(request)) return status;
  if (request.kind == Request::Kind::kUpdate && request.values->size() == 0) return 0;
  bool would = false;
  const int status = session().would_change(statement(), would);
  if (status == 0 && !would) return 0;
  if (!session().state(Look::kNow).is_usable()) {
    if (const int failure = recompose(request)) return failure;
  } else if (status != 0) {
    return logged(status);
  }
  return logged(session().change(statement(), change));
}

template <class Read>
int Lease::read_twice(Read read, const char* operation) {
  int status = read();
  if (status != 0 && session().state(Look::kNow).kind == SessionState::Kind::kOvertaken) {
    if (const int failure = reopen()) return failure;
    status = read();
  }
  return logged(status, operation);
}

int Lease::generation(uint64_t& generation) {
  return read_twice([&] { return session().generation(generation); }, "generation");
}

int Lease::save_copy(const char* path, uint64_t& generation) {
  return read_twice([&] { return session().save_copy(path, generation); }, "snapshot");
}

int Lease::begin() {
  const int status = renew();
  return status != 0 ? status : logged(session().begin(), "begin");
}

int Lease::rewind(uint64_t generation) {
  const int status = renew();
  return status != 0 ? status : logged(session().rewind(generation), "rewind");
}

int Lease::renew() {
  return session().state(Look::kNow).is_usable() ? 0 : reopen();
}

int Lease::logged(int status, const char* operation) {
  if (status == 0) return 0;
  return report_failure(status, "%s failed: %s (status %d)", operation, session().error().c_str(), status);
}

int Lease::logged(int status) {
  if (status == 0) return 0;
  const std::string reason(statement().reason().empty() ? session().error() : statement().reason());
  return report_failure(status, "%s failed: %s (status %d)", statement().describe().c_str(), reason.c_str(),
                        status);
}

}  // namespace zymdb::client
