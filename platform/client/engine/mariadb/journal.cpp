#include "client/engine/mariadb/journal.h"

#include <optional>

#include "client/engine/journal_entry.h"

namespace zymdb::client::mariadb {
namespace {

#define ZYMDB_ENTRIES "SELECT `_id`,`Time`,`Size`,`Changes` IS NOT NULL FROM `Journal` ORDER BY `_id`"
constexpr char kNewest[] = ZYMDB_ENTRIES " DESC LIMIT 1";
constexpr char kNewestAndOldest[] = "(" ZYMDB_ENTRIES " DESC LIMIT 1) UNION ALL (" ZYMDB_ENTRIES " LIMIT 1)";
#undef ZYMDB_ENTRIES
constexpr char kMove[] = "UPDATE `Journal` SET `_id`=?,`Time`=? WHERE `_id`=?";
constexpr char kAdd[] = "INSERT INTO `Journal` (`_id`,`Time`,`Size`,`Changes`) VALUES (?,?,?,?)";
constexpr char kDrop[] = "DELETE FROM `Journal` WHERE `_id`<? AND (`Time`<? OR `Size`<=?)";

constexpr Class kColumns[] = {Class::kInteger, Class::kInteger, Class::kInteger, Class::kInteger};

JournalEntry entry_of(Row row) {
  return {row[0].integer, row[1].integer, row[2].integer, row[3].integer != 0};
}

}  // namespace

Failure append_to_journal(Connection& connection, const HistoryBounds& bounds, const std::string& account) {
  JournalEntry newest;
  std::optional<JournalEntry> oldest;
  const auto take = [&](Row row) {
    const JournalEntry found = entry_of(row);
    if (found.id > newest.id) newest = found;
    if (!oldest || found.id < oldest->id) oldest = found;
    return true;
  };
  if (Failure failure = connection.run(kNewestAndOldest, {}, kColumns, take)) return failure;
  const JournalEntry entry = entry_after(newest, account);
  if (entry.takes_place_of(newest)) {
    const Argument values[] = {Argument::of(entry.id), Argument::of(entry.time), Argument::of(newest.id)};
    return connection.run(kMove, values);
  }
  const Argument values[] = {Argument::of(entry.id), Argument::of(entry.time), Argument::of(entry.size),
                             account.empty() ? Argument{} : Argument::of(std::string_view(account))};
  if (Failure failure = connection.run(kAdd, values)) return failure;
  const JournalEntry dropped = what_to_drop(oldest.value_or(entry), entry, bounds);
  if (dropped.id == 0) return {};
  const Argument limits[] = {Argument::of(dropped.id), Argument::of(dropped.time),
                             Argument::of(dropped.size)};
  return connection.run(kDrop, limits);
}

Failure read_generation(Connection& connection, uint64_t& generation) {
  generation = 0;
  return connection.run(kNewest, {}, kColumns, [&](Row row) {
    generation = static_cast<uint64_t>(row[0].integer);
    return true;
  });
}

}  // namespace zymdb::client::mariadb
