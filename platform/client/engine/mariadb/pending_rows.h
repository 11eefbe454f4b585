// New rows that a transaction has not sent yet: those of one statement go together, in one round trip.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PENDING_ROWS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PENDING_ROWS_H

#include <deque>
#include <string>
#include <vector>

#include "client/engine/mariadb/connection.h"

namespace zymdb::client::mariadb {

class PendingRows {
 public:
  bool empty() const { return values_.empty(); }
  // Whether a row of this statement may join those that are there.
  bool takes(const std::string& sql, size_t size) const;

  void add(const std::string& sql, std::span<const Argument::Type> types, std::span<const Argument> row);

  // Sends them. They are gone then, whatever comes of it.
  Failure send(Connection& connection);

  static size_t size_of(std::span<const Argument> row);

 private:
  std::string sql_;
  std::vector<Argument::Type> types_;
  std::vector<Argument> values_;
  std::deque<std::string> texts_;  // of the values
  size_t size_ = 0;
};

}  // namespace zymdb::client::mariadb

#endif
