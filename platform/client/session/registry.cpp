#include "client/session/registry.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <unordered_map>
#include <utility>

#include "client/coarse_clock.h"
#include "client/last_error.h"
#include "client/per_thread.h"
#include "client/status.h"
#include "controller/ruvo_log.h"

namespace zymdb::client {
namespace {

// Never destroyed: threads may outlive the statics of the process.
class Registry {
 public:
  static Registry& instance() {
    static Registry* const registry = new Registry;
    return *registry;
  }

  void add(const std::shared_ptr<_zym_db_handle_t>& handle) {
    const std::lock_guard lock(mutex_);
    handles_.emplace(handle.get(), handle);
  }

  std::shared_ptr<_zym_db_handle_t> find(_zym_db_handle_t* handle) {
    const std::lock_guard lock(mutex_);
    const auto found = handles_.find(handle);
    return found == handles_.end() || found->second->is_resting() ? nullptr : found->second;
  }

  // For a handle that is open.
  bool close(_zym_db_handle_t* handle) {
    const auto database = find(handle);
    return database != nullptr && end(database);
  }

  // For one that is open or rests. False: another thread was quicker.
  bool end(const std::shared_ptr<Database>& database) {
    {
      const std::lock_guard lock(mutex_);
      if (handles_.erase(static_cast<_zym_db_handle_t*>(database.get())) == 0) return false;
    }
    database->close();
    return true;
  }

  // Drops what this process inherited, if it was forked since the last call.
  void drop_inherited();

  // Ends every session with the database: SQLite shares some of a file's state between all connections of a
  // process, so that none of them is any better than the oldest.
  void drop_sessions(const std::string& path);

  // Ends the sessions with another file than lies at the path now. True: there were some. Waits for no
  // others.
  bool drop_sessions_of_other_files(const std::string& path);

  std::mutex opening;   // of the shared handle
  std::mutex openings;  // of any: one at a time
  std::atomic<_zym_db_handle_t*> shared{nullptr};

 private:
  Registry() { pthread_atfork(&before_fork, &in_parent, &in_child); }

  static void before_fork();
  static void in_parent();
  static void in_child();

  // No operation runs and no session opens meanwhile. For a thread that holds no session.
  struct Standstill {
    explicit Standstill(Registry& registry);

    std::vector<std::shared_ptr<ThreadSession>> sessions;
    std::vector<std::unique_lock<std::mutex>> locks;
  };

  std::mutex mutex_;
  std::unordered_map<_zym_db_handle_t*, std::shared_ptr<_zym_db_handle_t>> handles_;
  std::optional<Standstill> fork_;
  std::atomic<bool> inherited_{false};
};

Registry::Standstill::Standstill(Registry& registry) {
  locks.emplace_back(registry.mutex_);
  for (const auto& [handle, database] : registry.handles_) {
    locks.emplace_back(handle->mutex());
    handle->for_each_session([this](std::shared_ptr<ThreadSession> session) {
      sessions.push_back(std::move(session));
      locks.emplace_back(sessions.back()->mutex);
    });
  }
}

void Registry::before_fork() {
  instance().opening.lock();
  instance().openings.lock();
  instance().fork_.emplace(instance());
}

void Registry::in_parent() {
  instance().fork_.reset();
  instance().openings.unlock();
  instance().opening.unlock();
}

void Registry::in_child() {
  instance().inherited_.store(true, std::memory_order_relaxed);
  in_parent();
}

void Registry::drop_sessions(const std::string& path) {
  const Standstill standstill(*this);
  for (const auto& each : standstill.sessions) {
    if (each->session == nullptr || each->database->source().path != path) continue;
    if (!each->session->must_stay()) each->set(nullptr);
  }
}

bool Registry::drop_sessions_of_other_files(const std::string& path) {
  const uint64_t current = file_at(path);
  std::vector<std::shared_ptr<ThreadSession>> others;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [handle, database] : handles_) {
      if (database->source().path != path) continue;
      const std::lock_guard database_lock(handle->mutex());
      handle->for_each_session([&](std::shared_ptr<ThreadSession> session) {
        if (session->file != 0 && session->file != current) others.push_back(std::move(session));
      });
    }
  }
  for (const auto& other : others) {
    const std::lock_guard lock(other->mutex);
    other->set(nullptr);
  }
  return !others.empty();
}

// The child has one thread yet.
void Registry::drop_inherited() {
  if (!inherited_.load(std::memory_order_relaxed)) return;
  const std::lock_guard lock(mutex_);
  if (!inherited_.load(std::memory_order_relaxed)) return;
  for (const auto& [handle, database] : handles_) {
    const std::lock_guard database_lock(handle->mutex());
    handle->for_each_session([](const auto& session) {
      const std::lock_guard session_lock(session->mutex);
      if (session->session != nullptr) session->session->disown();
      session->set(nullptr);
    });
    handle->writers().reset_after_fork();
  }
  inherited_.store(false, std::memory_order_relaxed);
}

// The calling thread's sessions; usually one.
class ThreadSessions {
 public:
  ThreadSessions() = default;
  ThreadSessions(const ThreadSessions&) = delete;
  ThreadSessions& operator=(const ThreadSessions&) = delete;
  ~ThreadSessions();

  // Null when the handle is not open.
  std::shared_ptr<ThreadSession> get(_zym_db_handle_t* handle);

  // Closes a handle, but for its session, when no other thread uses it. Opening and closing a database that
  // nobody else has open makes and removes its log each time, and a drive list opens one twice.
  bool rest(_zym_db_handle_t* handle);
  // The handle that rests, open again, if it is of this database and that is still there; else null.
  _zym_db_handle_t* wake(const DataSource& source);

 private:
  static constexpr int64_t kRest = 1'000'000'000;

  std::shared_ptr<ThreadSession> known(_zym_db_handle_t* handle) const {
    const auto found = std::find_if(sessions_.begin(), sessions_.end(),
                                    [&](const auto& each) { return each->database.get() == handle; });
    return found == sessions_.end() ? nullptr : *found;
  }
  void end_rest() {
    if (resting_ != nullptr) Registry::instance().end(std::exchange(resting_, nullptr)->database);
  }

  std::vector<std::shared_ptr<ThreadSession>> sessions_;
  std::shared_ptr<ThreadSession> resting_;  // one of them
  int64_t resting_since_ = 0;
};

ThreadSessions::~ThreadSessions() {
  end_rest();
  for (const auto& session : sessions_) {
    const std::lock_guard lock(session->mutex);
    session->close();
  }
}

std::shared_ptr<ThreadSession> ThreadSessions::get(_zym_db_handle_t* handle) {
  if (resting_ != nullptr && coarse_now() - resting_since_ > kRest) end_rest();
  if (auto session = known(handle)) return session->database->is_resting() ? nullptr : session;
  std::erase_if(sessions_, [](const auto& each) { return each->closed.load(); });
  const auto database = Registry::instance().find(handle);
  if (database == nullptr) return nullptr;
  auto session = Database::join(database);
  if (session != nullptr) sessions_.push_back(session);
  return session;
}

bool ThreadSessions::rest(_zym_db_handle_t* handle) {
  auto session = known(handle);
  if (session == nullptr) return false;
  {
    const std::lock_guard lock(session->mutex);
    if (session->session == nullptr || !session->session->may_rest()) return false;
  }
  if (!session->database->rest(*session)) return false;
  end_rest();
  resting_ = std::move(session);
  resting_since_ = coarse_now();
  return true;
}

_zym_db_handle_t* ThreadSessions::wake(const DataSource& source) {
  if (resting_ == nullptr || resting_->database->source().path != source.path) return nullptr;
  const auto is_usable = [this] {
    const std::lock_guard lock(resting_->mutex);
    return resting_->session != nullptr && resting_->session->is_usable(true);
  };
  if (!is_usable()) {
    end_rest();
    return nullptr;
  }
  Database* const database = std::exchange(resting_, nullptr)->database.get();
  database->wake();
  return static_cast<_zym_db_handle_t*>(database);
}

}  // namespace

_zym_db_handle_t* open_handle(const DataSource& source) {
  Registry::instance().drop_inherited();
  if (ThreadSessions* const sessions = PerThread<ThreadSessions>::get(); sessions != nullptr) {
    if (_zym_db_handle_t* const awake = sessions->wake(source)) return awake;
  }
  const auto database = std::make_shared<_zym_db_handle_t>(source);
  Registry::instance().add(database);
  const auto close = [](_zym_db_handle_t* unusable) { close_handle(unusable); };
  std::unique_ptr<_zym_db_handle_t, decltype(close)> handle(database.get());
  return Lease().acquire(handle.get()) == 0 ? handle.release() : nullptr;
}

_zym_db_handle_t* shared_handle() {
  Registry& registry = Registry::instance();
  if (_zym_db_handle_t* handle = registry.shared.load(std::memory_order_acquire)) return handle;
  const std::lock_guard lock(registry.opening);
  if (_zym_db_handle_t* handle = registry.shared.load(std::memory_order_acquire)) return handle;
  DataSource source;
  std::string error;
  if (!locate_inventory(source, error)) {
    report_failure(ZYM_DB_STATUS_NO_DB, "%s", error.c_str());
    return nullptr;
  }
  _zym_db_handle_t* handle = open_handle(source);
  registry.shared.store(handle, std::memory_order_release);
  return handle;
}

bool close_handle(_zym_db_handle_t* handle) {
  Registry& registry = Registry::instance();
  registry.drop_inherited();
  _zym_db_handle_t* shared = handle;
  if (registry.shared.compare_exchange_strong(shared, nullptr)) return registry.close(handle);
  ThreadSessions* const sessions = PerThread<ThreadSessions>::known();
  return (sessions != nullptr && sessions->rest(handle)) || registry.close(handle);
}

int Lease::acquire(_zym_db_handle_t* handle) {
  ThreadSessions* const sessions = PerThread<ThreadSessions>::get();
  if (sessions == nullptr) return note_failure(ZYM_DB_STATUS_NO_DB);
  Registry::instance().drop_inherited();
  auto session = sessions->get(handle);
  if (session == nullptr) return note_failure(ZYM_DB_STATUS_NO_DB);
  held_ = std::move(session);
  lock_ = std::unique_lock(held_->mutex);
  if (held_->closed) return note_failure(ZYM_DB_STATUS_NO_DB);
  if (held_->session != nullptr && held_->session->is_usable(false)) return 0;
  return reopen();
}

int Lease::reopen() {
  Database& database = *held_->database;
  const DataSource& source = database.source();
  Registry& registry = Registry::instance();
  const bool was_open = held_->session != nullptr;
  const char* loss = was_open ? held_->session->loss() : nullptr;
  lock_.unlock();
  const std::lock_guard opening(registry.openings);
  if (was_open) registry.drop_sessions(source.path);
  Opened opened = open_session(source, database.writers(), {}, [&] {
    if (registry.drop_sessions_of_other_files(source.path)) loss = kReplaced;
  });
  lock_.lock();
  if (held_->closed) return note_failure(ZYM_DB_STATUS_NO_DB);
  held_->set(std::move(opened.session));
  if (opened.status != 0) {
    report_failure(opened.status, "%s", opened.error.c_str());
  } else if (loss != nullptr) {
    ruvo_log::logWarn("the %s database %s %s: opened anew", source.schema->name, source.path.c_str(), loss);
  }
  return opened.status;
}

int Lease::compose(const Request& request) {
  return held_->statement.compose(held_->session->catalog(), request);
}

int Lease::query(const Request& request, Result& result) {
  if (const int status = compose(request)) return logged(status);
  const int status = held_->session->query(held_->statement, result);
  if (status == 0 || held_->session->is_usable(true) || held_->session->loss() == nullptr)
    return logged(status);
  // It failed on what is the database no longer.
  if (const int unopened = reopen()) return unopened;
  if (const int refused = compose(request)) return logged(refused);
  return logged(held_->session->query(held_->statement, result));
}

// What is read may be a moment old, what is written goes to the file that is there now.
int Lease::change(const Request& request, Change& change) {
  change = {};
  if (const int status = compose(request)) return logged(status);
  if (request.kind == Request::Kind::kUpdate && request.values->size() == 0) return 0;
  bool would = false;
  const int status = held_->session->would_change(held_->statement, would);
  if (status == 0 && !would) return 0;
  if (!held_->session->is_usable(true)) {
    if (const int unopened = reopen()) return unopened;
    // Its names are those of the new session's catalog.
    if (const int refused = compose(request)) return logged(refused);
  } else if (status != 0) {
    return logged(status);
  }
  return logged(held_->session->change(held_->statement, change));
}

int Lease::begin() {
  if (!held_->session->is_usable(true)) {
    if (const int status = reopen()) return status;
  }
  return logged(held_->session->begin(), "begin");
}

int Lease::logged(int status, const char* operation) const {
  if (status != 0) {
    report_failure(status, "%s failed: %s (status %d)", operation, held_->session->error().c_str(), status);
  }
  return status;
}

int Lease::logged(int status) const {
  if (status == 0) return 0;
  const Statement& statement = held_->statement;
  const std::string reason(statement.reason().empty() ? held_->session->error() : statement.reason());
  return report_failure(status, "%s failed: %s (status %d)", statement.describe().c_str(), reason.c_str(),
                        status);
}

}  // namespace zymdb::client
