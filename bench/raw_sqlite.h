// The database engine's own interface: what the library is compared with.
#ifndef ZYMDB_BENCH_RAW_SQLITE_H
#define ZYMDB_BENCH_RAW_SQLITE_H

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "function_row.h"

namespace bench {

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Prepared = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

// With the settings that the client uses.
Connection open_raw(const std::string& path);
Prepared prepare(sqlite3* connection, const char* sql);
void execute(sqlite3* connection, const char* sql);

inline void bind_one(sqlite3_stmt* statement, int place, int64_t value) {
  sqlite3_bind_int64(statement, place, value);
}
inline void bind_one(sqlite3_stmt* statement, int place, const char* text) {
  sqlite3_bind_text(statement, place, text, -1, SQLITE_STATIC);
}
template <class... Arguments>
void bind([[maybe_unused]] sqlite3_stmt* statement, Arguments... arguments) {
  int place = 0;
  (bind_one(statement, ++place, arguments), ...);
}

// The columns of the current row, in their order, as the library's records hold them.
class Columns {
 public:
  explicit Columns(sqlite3_stmt* row) : row_(row) {}

  Number number() { return {sqlite3_column_int64(row_, column_++)}; }

  Number number_in_text() {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row_, column_++));
    return {text != nullptr ? static_cast<int64_t>(std::strtoul(text, nullptr, 0)) : 0};
  }

  template <size_t N>
  void text(char (&field)[N]) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row_, column_));
    put_text({text, static_cast<size_t>(sqlite3_column_bytes(row_, column_++))}, field);
  }

 private:
  sqlite3_stmt* row_;
  int column_ = 0;
};

// The statements of a benchmark, each by its place.
class Statements {
 public:
  Statements(sqlite3* connection, std::span<const char* const> sql) {
    for (const char* text : sql) statements_.push_back(prepare(connection, text));
  }

  // For whoever binds by itself.
  sqlite3_stmt* operator[](size_t place) { return statements_[place].get(); }

  // The first row, if there is one.
  template <class Read, class... Arguments>
  bool one(size_t place, Read read, Arguments... arguments) {
    sqlite3_stmt* const statement = statements_[place].get();
    bind(statement, arguments...);
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    if (found) read(Columns(statement));
    sqlite3_reset(statement);
    return found;
  }

  template <class Read, class... Arguments>
  void each(size_t place, Read read, Arguments... arguments) {
    sqlite3_stmt* const statement = statements_[place].get();
    bind(statement, arguments...);
    while (sqlite3_step(statement) == SQLITE_ROW) read(Columns(statement));
    sqlite3_reset(statement);
  }

  template <class... Arguments>
  bool change(size_t place, Arguments... arguments) {
    sqlite3_stmt* const statement = statements_[place].get();
    bind(statement, arguments...);
    const bool done = sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_reset(statement);
    return done;
  }

 private:
  std::vector<Prepared> statements_;
};

// An array that grows as the rows come: the engine does not tell their number beforehand.
template <class Record>
class GrowingArray {
 public:
  GrowingArray() = default;
  GrowingArray(const GrowingArray&) = delete;
  GrowingArray& operator=(const GrowingArray&) = delete;
  ~GrowingArray() { std::free(records_); }

  Record& add() {
    if (count_ == room_) {
      room_ = room_ == 0 ? 64 : room_ * 2;
      records_ = static_cast<Record*>(std::realloc(records_, room_ * sizeof(Record)));
    }
    return records_[count_++];
  }
  // For records that hold more than the row tells.
  Record& add_zeroed() {
    Record& record = add();
    std::memset(static_cast<void*>(&record), 0, sizeof record);
    return record;
  }

  size_t count() const { return count_; }
  const Record* begin() const { return records_; }
  Record* begin() { return records_; }

 private:
  Record* records_ = nullptr;
  size_t count_ = 0;
  size_t room_ = 0;
};

}  // namespace bench

#endif
