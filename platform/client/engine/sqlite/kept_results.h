// What the statements of one connection answered last, for as long as nobody commits.
//
// Services ask the same again and again, and nearly always nothing has changed. A result stands for the
// header of the write-ahead log that was read before its statement ran: as long as the header is the same no
// commit has ended since, so that the statement would answer the same.
//
// A result is kept once its statement comes a second time under one header: what is asked once costs no copy.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_KEPT_RESULTS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_KEPT_RESULTS_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "client/dialect/statement.h"
#include "client/engine/sqlite/wal_index.h"
#include "client/result/result.h"

namespace zymdb::client::sqlite {

class KeptResults {
 public:
  // All of the process together keep at most `limit` bytes.
  explicit KeptResults(size_t limit);
  ~KeptResults();
  KeptResults(const KeptResults&) = delete;
  KeptResults& operator=(const KeptResults&) = delete;

  // What was kept under another header goes.
  void look(const WalHeader& header);

  // Fills the result with what the statement of this number answered to these arguments, under the header
  // that was looked at last.
  bool find(uint64_t statement, std::span<const Argument> arguments, Result& result);

  // The answer to what was not found. False: others hold the room for it.
  bool offer(const Result& result);

  // Gives up what goes beyond an equal share of the room.
  void shrink();
  void clear();

  size_t size() const { return size_; }

 private:
  struct Entry {
    uint64_t hash;
    std::string key;
    KeptRows rows;

    size_t size() const;
  };
  using Entries = std::list<Entry>;

  bool has_come_before(uint64_t hash);
  bool keep(Entry entry);
  bool make_room(size_t size);
  size_t share() const;
  void drop_last();

  size_t limit_;
  WalHeader header_{};
  Entries entries_;  // the most recently used first
  std::unordered_map<uint64_t, Entries::iterator> places_;
  size_t size_ = 0;
  std::string key_;  // what was looked for last
  uint64_t hash_ = 0;
  uint32_t era_ = 0;             // of the header
  std::vector<uint16_t> asked_;  // what came under it, in buckets
};

}  // namespace zymdb::client::sqlite

#endif
