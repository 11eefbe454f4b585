#include "client/engine/journal_entry.h"

#include <chrono>

namespace zymdb::client {

using std::chrono::milliseconds;

JournalEntry entry_after(const JournalEntry& newest, std::string_view account) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {newest.id + 1, std::chrono::duration_cast<milliseconds>(now).count(),
          newest.size + static_cast<int64_t>(account.size()), !account.empty()};
}

// Once it is too much an eighth goes, so that not every change writes at both ends of the table.
JournalEntry what_to_drop(const JournalEntry& oldest, const JournalEntry& newest,
                          const HistoryBounds& bounds) {
  const int64_t oldest_time = newest.time - milliseconds(bounds.age).count();
  const bool is_too_much = bounds.keeps_any() && newest.size - oldest.size > bounds.bytes;
  if (!is_too_much && oldest.time >= oldest_time) return {};
  return {newest.id, oldest_time, is_too_much ? newest.size - bounds.bytes / 8 * 7 : 0};
}

}  // namespace zymdb::client
