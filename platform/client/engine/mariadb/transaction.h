// One writer's transaction: it queues for the schema's mark, changes rows by their ids, and accounts for what
// was there before.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TRANSACTION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_TRANSACTION_H

#include <map>
#include <string>
#include <vector>

#include "client/engine/account.h"
#include "client/engine/engine.h"
#include "client/engine/history_bounds.h"
#include "client/engine/mariadb/connection.h"
#include "client/engine/mariadb/pending_rows.h"
#include "client/engine/mariadb/shapes.h"
#include "client/engine/mariadb/tables.h"
#include "client/engine/volatile_columns.h"

namespace zymdb::client::mariadb {

// What a transaction is about. All of it outlives the transaction.
struct Subject {
  const Schema& schema;
  const Tables& tables;
  const VolatileColumns& volatiles;
  const HistoryBounds& bounds;
};

// Whether new rows wait for each other, in a transaction of several changes, or are sent at once.
enum class NewRows : uint8_t { kSent, kGathered };

class Transaction {
 public:
  Transaction(Connection& connection, const Subject& subject, NewRows rows = NewRows::kSent)
      : connection_(connection), subject_(subject), new_rows_(rows) {}

  Failure begin();
  Failure change(const Statement& statement, Shape& shape, Change& change);
  // Sends the rows that wait, before anything is read that may be of them. A failure ends the transaction:
  // who put the rows was told that they are there.
  Failure send_rows();
  // What precedes the commit: the account. The commit itself is the last statement, so that who runs it knows
  // whether anything was lost before.
  Failure record();
  Failure commit();
  void rollback() { connection_.rollback(); }

 private:
  struct Former {
    int64_t id;
    std::vector<Argument> cells;
    std::vector<std::string> bytes;  // of the cells
  };

  Failure insert(const Table& table, Shape& shape, std::span<const Argument> values, Change& change);
  Failure update(const Table& table, Shape& shape, std::span<const Argument> values,
                 std::vector<Argument> condition, Change& change);
  Failure remove(const Table& table, Shape& shape, std::vector<Argument> condition, Change& change);
  Failure put(const Table& table, const std::string& insert, std::span<const Argument> row, bool has_new_id);
  Failure next_id(const Table& table, int64_t& id);
  Failure find_last_id(const Table& table, int64_t& last);
  Failure note_lasting_id(const Table& table, int64_t id);
  Failure read_affected(Shape& shape, std::vector<Argument>& condition,
                        std::span<const Column* const> columns, std::vector<Former>& rows);
  Failure admit(std::span<const Column* const> columns, std::span<const Argument> values,
                std::vector<Argument>& admitted, std::vector<std::string>& storage) const;
  void account_for_update(const Table& table, std::span<const Column* const> columns,
                          std::span<const Argument> values, const std::vector<Former>& rows);
  void account_for_removal(const Table& table, std::span<const Column* const> columns,
                           const std::vector<Former>& rows);
  bool has_journal() const { return subject_.tables.catalog.table(kJournalTable) != nullptr; }
  bool is_accounted(const Table& table) const;

  Connection& connection_;
  const Subject& subject_;
  NewRows new_rows_;
  PendingRows pending_;
  std::map<std::string, int64_t> last_ids_;  // by table: nobody else adds rows meanwhile
  Account account_;
  bool changed_ = false;
};

}  // namespace zymdb::client::mariadb

#endif
