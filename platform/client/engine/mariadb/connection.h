// A connection to one of the hosts of an address, and its prepared statements.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_CONNECTION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_CONNECTION_H

#include <mysql.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "client/dialect/dialect.h"
#include "client/engine/mariadb/address.h"
#include "client/engine/mariadb/emitter.h"
#include "client/engine/mariadb/failure.h"
#include "client/limits.h"

namespace zymdb::client::mariadb {

// A row as it comes: a value for each column, of the classes that were asked for.
using Row = std::span<const Argument>;
// False ends the reading: the rows are too many.
using TakeRow = std::function<bool(Row)>;

class Connection {
 public:
  explicit Connection(const Limits& limits);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // To the first host that takes it, beginning with that of this number; the number then tells which one.
  Failure open(const Address& address, size_t& host);

  // In a child process: nothing is said to the server, whose connection is its parent's.
  void abandon();

  // A statement without values and rows.
  Failure execute(const std::string& sql);
  // A transaction that changes rows.
  Failure begin();
  void rollback();
  // Waited for longer than other statements.
  Failure commit();
  // Prepared and kept. `classes` are the columns', `row` is shown each row.
  Failure run(const std::string& sql, std::span<const Argument> arguments, std::span<const Class> classes,
              const TakeRow& row);
  Failure run(const std::string& sql, std::span<const Argument> arguments) {
    return run(sql, arguments, {}, {});
  }

 private:
  struct CloseStatement {
    void operator()(MYSQL_STMT* statement) const { mysql_stmt_close(statement); }
  };
  using StatementPtr = std::unique_ptr<MYSQL_STMT, CloseStatement>;
  struct Kept {
    std::string sql;
    StatementPtr statement;
  };

  // What the host says of its cluster; kUnknown where it says nothing.
  enum class Membership : uint8_t { kUnknown, kNone, kOfMajority, kCutOff };

  Failure connect(const Address& address, const Host& host);
  Failure configure();
  Failure find_cluster();
  Membership membership();
  Failure require_transaction();
  Failure execute_new(MYSQL_STMT* statement, const std::string& sql, std::span<MYSQL_BIND> values);
  MYSQL_STMT* find(const std::string& sql);
  void make_room();
  void keep(const std::string& sql, StatementPtr statement);
  Failure fetch(MYSQL_STMT* statement, std::span<const Class> classes, const TakeRow& row);
  Failure failure();
  Failure failure(MYSQL_STMT* statement);
  Failure understood(Failure failure);
  Failure said_by_host(Failure failure) const;

  Limits limits_;
  bool is_in_transaction_ = false;
  std::chrono::seconds silence_;  // after which a host is taken for lost
  MYSQL* mysql_ = nullptr;
  std::string host_;
  bool is_of_cluster_ = false;
  std::list<Kept> kept_;  // the most recently used first
  std::unordered_map<std::string_view, std::list<Kept>::iterator> places_;
};

}  // namespace zymdb::client::mariadb

#endif
