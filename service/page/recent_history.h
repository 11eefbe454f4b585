// The newest changes of the inventory, from its journal.
#ifndef ZYMDB_SERVICE_PAGE_RECENT_HISTORY_H
#define ZYMDB_SERVICE_PAGE_RECENT_HISTORY_H

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "documents/history.h"

namespace zymdb::service {

struct PastChange {
  uint64_t generation = 0;
  // An object: generation and time, what documents::to_json_line() says of the change, "where" and "what" for
  // people; of the first collection "change" and "parts", and of what there was no room for "change": "more"
  // and the number of "parts".
  std::string json;
};

// Reads what is new since it was last asked.
class RecentHistory {
 public:
  // Of what is told, the oldest is dropped beyond this.
  static constexpr size_t kMostChanges = 300;
  // Transactions that one look goes back.
  static constexpr size_t kMostEntries = 60;
  // Of one transaction.
  static constexpr size_t kMostOfOne = 40;

  explicit RecentHistory(const std::vector<documents::RecordType>& types) : types_(types) {}

  // The newest first. Throws DatabaseError.
  std::vector<PastChange> newest(std::optional<uint64_t> generation);

 private:
  uint64_t first_to_read();

  const std::vector<documents::RecordType>& types_;
  std::mutex mutex_;
  std::optional<uint64_t> generation_;  // up to which they are read
  std::deque<PastChange> changes_;
};

}  // namespace zymdb::service

#endif
