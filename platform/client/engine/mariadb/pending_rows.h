// New rows that a transaction has not sent yet: those with the same columns go together, in one statement.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PENDING_ROWS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PENDING_ROWS_H

#include <span>
#include <string>

#include "client/engine/mariadb/connection.h"

namespace zymdb::client::mariadb {

class PendingRows {
 public:
  // Whether it is small enough to wait at all.
  static bool may_hold(std::span<const Argument> row);
  // Whether a row may join those that are there. `insert` is the statement up to its values.
  bool takes(const std::string& insert, std::span<const Argument> row) const;
  void add(const std::string& insert, std::span<const Argument> row);

  // Sends them. They are gone then, whatever comes of it.
  Failure send(Connection& connection);

 private:
  std::string insert_;
  std::string sql_;
  size_t size_ = 0;
};

}  // namespace zymdb::client::mariadb

#endif
