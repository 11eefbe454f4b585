#include "client/engine/sqlite/authorizer.h"

#include <thread>

#include "client/dialect/dialect.h"
#include "client/engine/sqlite/change_recorder.h"
#include "client/engine/sqlite/engine.h"

namespace zymdb::client::sqlite {
namespace {

// Virtual machine instructions between two looks at the clock: well below a millisecond.
constexpr int kInstructions = 10000;

// Short, so that another process's writers, which lock for about the time of one flush, cannot starve ours.
constexpr std::chrono::microseconds kWait{700};

std::string_view text(const char* value) {
  return value != nullptr ? value : "";
}

bool is_internal_table(std::string_view table) {
  return table.starts_with("sqlite_");
}

}  // namespace

void Authorizer::attach(sqlite3* database) {
  sqlite3_set_authorizer(database, authorize, this);
  sqlite3_progress_handler(database, kInstructions, check_time, this);
  sqlite3_busy_handler(database, wait_for_writer, this);
}

void Authorizer::watch(Request::Kind kind, std::string_view table) {
  watching_ = true;
  kind_ = kind;
  table_ = table;
  started_ = {};
}

int Authorizer::authorize(void* self, int action, const char* first, const char* second, const char*,
                          const char*) {
  return static_cast<Authorizer*>(self)->allows(action, text(first), text(second)) ? SQLITE_OK : SQLITE_DENY;
}

bool Authorizer::allows(int action, std::string_view first, std::string_view second) const {
  if (!watching_) return true;
  switch (action) {
    case SQLITE_SELECT:
      return true;
    case SQLITE_READ:
      return !is_internal_table(first);
    case SQLITE_FUNCTION:
      return second == "like" || second == kGathering || is_function(second);
    case SQLITE_INSERT:
      return kind_ == Request::Kind::kInsert && may_write(first);
    case SQLITE_UPDATE:
      return kind_ == Request::Kind::kUpdate && may_write(first);
    case SQLITE_DELETE:
      return kind_ == Request::Kind::kDelete && may_write(first);
    default:
      return false;
  }
}

// The journal is the client's own.
bool Authorizer::may_write(std::string_view table) const {
  return table == table_ && table != kJournalTable;
}

// The clock starts with the first look: a statement that ends before it never pays for one.
int Authorizer::check_time(void* self) {
  auto& authorizer = *static_cast<Authorizer*>(self);
  if (!authorizer.watching_) return 0;
  const auto now = Clock::now();
  if (authorizer.started_ == Clock::time_point{}) authorizer.started_ = now;
  return now - authorizer.started_ > authorizer.limits_.statement;
}

int Authorizer::wait_for_writer(void* self, int tries) {
  auto& authorizer = *static_cast<Authorizer*>(self);
  const auto now = Clock::now();
  if (tries == 0) authorizer.waiting_since_ = now;
  if (now - authorizer.waiting_since_ > authorizer.limits_.writer) return 0;
  std::this_thread::sleep_for(kWait);
  return 1;
}

}  // namespace zymdb::client::sqlite
