// The rows of the table Journal, and what becomes of them with a change: what every engine keeps alike.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_JOURNAL_ENTRY_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_JOURNAL_ENTRY_H

#include <cstdint>
#include <string_view>

#include "client/engine/history_bounds.h"

namespace zymdb::client {

struct JournalEntry {
  int64_t id = 0;    // the generation; 0: there is no entry
  int64_t time = 0;  // ms since 1970
  int64_t size = 0;  // of all accounts up to this one
  bool has_account = false;

  // Two changes without an account need one entry only.
  bool takes_place_of(const JournalEntry& newest) const {
    return !has_account && newest.id != 0 && !newest.has_account;
  }
};

// For a change that is committed now.
JournalEntry entry_after(const JournalEntry& newest, std::string_view account);

// Entries before `id` go where they are older than `time` or no larger than `size`; none where `id` is 0.
JournalEntry what_to_drop(const JournalEntry& oldest, const JournalEntry& newest,
                          const HistoryBounds& bounds);

}  // namespace zymdb::client

#endif
