// What a transaction changes, as SQLite tells it row by row: the journal's account of what was there before.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CHANGE_RECORDER_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_CHANGE_RECORDER_H

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "client/dialect/catalog.h"
#include "client/engine/account.h"
#include "client/engine/volatile_columns.h"

namespace zymdb::client::sqlite {

class ChangeRecorder {
 public:
  // `schema` is the text of the database's schema and outlives the recorder.
  explicit ChangeRecorder(std::string_view schema) : volatile_(schema) {}
  ~ChangeRecorder();
  ChangeRecorder(const ChangeRecorder&) = delete;
  ChangeRecorder& operator=(const ChangeRecorder&) = delete;

  // Hooks it into the connection. Both outlive the recorder.
  void attach(sqlite3* database, const Catalog& catalog);

  void forget();

  // Whether anything is other than it was, volatile columns included.
  bool has_changes() const { return changed_; }
  // For want of memory the account is not whole.
  bool has_failed() const { return failed_; }

  // Empty when nothing but volatile columns changed.
  std::string account() const { return account_.text(); }

 private:
  static void hear(void* self, sqlite3* database, int action, const char* schema, const char* table,
                   sqlite3_int64 old_id, sqlite3_int64 new_id);
  void record(int action, std::string_view table, int64_t old_id, int64_t new_id);
  void record_update(const Table& table, TableChanges& changes, int64_t id);
  void record_delete(const Table& table, TableChanges& changes, int64_t id);

  VolatileColumns volatile_;
  sqlite3* database_ = nullptr;
  const Catalog* catalog_ = nullptr;
  Account account_;
  bool changed_ = false;
  bool failed_ = false;
};

}  // namespace zymdb::client::sqlite

#endif
