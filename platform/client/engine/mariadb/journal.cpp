#include "client/engine/mariadb/journal.h"

#include <chrono>

namespace zymdb::client::mariadb {
namespace {

#define ZYMDB_ENTRIES "SELECT `_id`,`Time`,`Size`,`Changes` IS NOT NULL FROM `Journal` ORDER BY `_id`"
constexpr char kNewest[] = ZYMDB_ENTRIES " DESC LIMIT 1";
constexpr char kOldest[] = ZYMDB_ENTRIES " LIMIT 1";
#undef ZYMDB_ENTRIES
constexpr char kMove[] = "UPDATE `Journal` SET `_id`=?,`Time`=? WHERE `_id`=?";
constexpr char kAdd[] = "INSERT INTO `Journal` (`_id`,`Time`,`Size`,`Changes`) VALUES (?,?,?,?)";
constexpr char kDrop[] = "DELETE FROM `Journal` WHERE `_id`<? AND (`Time`<? OR `Size`<=?)";

struct Entry {
  int64_t id = 0;
  int64_t time = 0;  // ms since 1970
  int64_t size = 0;  // of all accounts up to this one
  bool has_account = false;
};

int64_t now_in_milliseconds() {
  using std::chrono::system_clock;
  return std::chrono::duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch())
      .count();
}

Failure find(Connection& connection, const char* sql, Entry& entry) {
  static constexpr Class kColumns[] = {Class::kInteger, Class::kInteger, Class::kInteger, Class::kInteger};
  return connection.run(sql, {}, kColumns, [&](Row row) {
    entry = {row[0].integer, row[1].integer, row[2].integer, row[3].integer != 0};
    return true;
  });
}

// Once it is too much an eighth goes, so that not every change writes at both ends of the table.
Failure drop_oldest(Connection& connection, const HistoryBounds& bounds, const Entry& newest) {
  const int64_t oldest_time = newest.time - std::chrono::milliseconds(bounds.age).count();
  Entry oldest;
  if (Failure failure = find(connection, kOldest, oldest)) return failure;
  const bool is_too_much = bounds.keeps_any() && newest.size - oldest.size > bounds.bytes;
  if (!is_too_much && oldest.time >= oldest_time) return {};
  const int64_t dropped_size = is_too_much ? newest.size - bounds.bytes / 8 * 7 : 0;
  const Argument values[] = {Argument::of(newest.id), Argument::of(oldest_time), Argument::of(dropped_size)};
  return connection.run(kDrop, values);
}

}  // namespace

Failure append_to_journal(Connection& connection, const HistoryBounds& bounds, const std::string& account) {
  Entry newest;
  if (Failure failure = find(connection, kNewest, newest)) return failure;
  const bool moves = account.empty() && newest.id != 0 && !newest.has_account;
  const Entry entry{newest.id + 1, now_in_milliseconds(), newest.size + static_cast<int64_t>(account.size())};
  if (moves) {
    const Argument values[] = {Argument::of(entry.id), Argument::of(entry.time), Argument::of(newest.id)};
    return connection.run(kMove, values);
  }
  const Argument values[] = {Argument::of(entry.id), Argument::of(entry.time), Argument::of(entry.size),
                             account.empty() ? Argument{} : Argument::of(std::string_view(account))};
  if (Failure failure = connection.run(kAdd, values)) return failure;
  return drop_oldest(connection, bounds, entry);
}

Failure read_generation(Connection& connection, uint64_t& generation) {
  Entry newest;
  Failure failure = find(connection, kNewest, newest);
  generation = static_cast<uint64_t>(newest.id);
  return failure;
}

}  // namespace zymdb::client::mariadb
