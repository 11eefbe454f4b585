// What became of an inventory, change by change: its journal, read as differences of documents.
#ifndef ZYMDB_DOCUMENTS_HISTORY_H
#define ZYMDB_DOCUMENTS_HISTORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/difference.h"

namespace zymdb::documents {

// An entry of the journal that tells of a change.
struct Entry {
  uint64_t generation = 0;
  int64_t time = 0;  // ms since 1970
  std::string account;
  bool follows_others = false;  // which were dropped, or are in front of it
};

// What one transaction did to the machine's parts.
struct Event {
  uint64_t generation = 0;
  int64_t time = 0;  // ms since 1970
  bool is_baseline = false;  // the first collection, whose parts are no changes
  std::vector<Change> changes;
};

// Whether the records of a class are read from the table: where an entry tells of no such table, they are as they
// were.
bool is_read_from(std::string_view class_name, std::string_view table);

// The open inventory's entries, the oldest first. Throws DatabaseError when they cannot be read.
std::vector<Entry> read_entries();

// The newest generation at that time; nothing before the first entry.
std::optional<uint64_t> generation_at(const std::vector<Entry>& entries, int64_t time);

// What the entries from `since` on did, the oldest first. Takes the open inventory back step by step: it is to be a
// copy. Transactions that left every field as it was are left out.
std::vector<Event> read_history(const std::vector<RecordType>& types, uint64_t since);

// "2026-01-31 12:00:00", UTC.
std::string time_text(int64_t milliseconds);

}  // namespace zymdb::documents

#endif
