#include "client/engine/mariadb/connection.h"

#include <errmsg.h>
#include <fcntl.h>
#include <mysqld_error.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>

#include "client/engine/mariadb/shapes.h"
#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

constexpr size_t kPreparedStatements = 64;
constexpr unsigned kMostValuesAtOnce = 200;
constexpr unsigned kConnectSeconds = 3;
// Of a network and a busy server, beside what a statement or a wait for a lock may take.
constexpr std::chrono::seconds kMargin{3};
constexpr std::chrono::seconds kCommit{20};
constexpr size_t kFirstText = 256;
constexpr char kOptionGroup[] = "zymdb";
constexpr char kNoMajority[] = "the node is not part of a cluster's majority";

// strict: nothing is cut short without a word. no backslash: a pattern's is a letter like others.
// max_sort_length: of a text that is sorted by.
constexpr char kSettings[] =
    "SET SESSION sql_mode='STRICT_ALL_TABLES,NO_BACKSLASH_ESCAPES,NO_ENGINE_SUBSTITUTION',"
    "tx_isolation='REPEATABLE-READ',autocommit=1,sql_auto_is_null=0,sql_safe_updates=0,sql_select_limit="
    "DEFAULT,"
    "max_sort_length=16384,character_set_client=binary,character_set_results=NULL,character_set_connection="
    "binary,"
    "max_statement_time=";

Failure read_password(const std::string& path, std::string& password) {
  std::ifstream file(path);
  if (!std::getline(file, password) && !file.eof()) return {kStatusIo, path + ": " + std::strerror(errno)};
  return {};
}

enum_field_types type_of(Argument::Type type) {
  if (type == Argument::Type::kInteger) return MYSQL_TYPE_LONGLONG;
  if (type == Argument::Type::kReal) return MYSQL_TYPE_DOUBLE;
  return type == Argument::Type::kNull ? MYSQL_TYPE_NULL : MYSQL_TYPE_BLOB;
}

std::vector<MYSQL_BIND> bind(std::span<const Argument> arguments) {
  std::vector<MYSQL_BIND> places(arguments.size());
  for (size_t i = 0; i < arguments.size(); ++i) {
    const Argument& argument = arguments[i];
    MYSQL_BIND& place = places[i];
    place.buffer_type = type_of(argument.type);
    // The connector only reads what is bound.
    place.buffer = const_cast<int64_t*>(&argument.integer);
    if (argument.type != Argument::Type::kText && argument.type != Argument::Type::kBlob) continue;
    place.buffer = const_cast<char*>(argument.text.data() != nullptr ? argument.text.data() : "");
    place.buffer_length = argument.text.size();
  }
  return places;
}

// Where the columns of a row are put.
class Landing {
 public:
  explicit Landing(std::span<const Class> classes)
      : classes_(classes), binds_(classes.size()), cells_(classes.size()), row_(classes.size()) {
    for (size_t i = 0; i < classes.size(); ++i) {
      MYSQL_BIND& bind = binds_[i];
      Cell& cell = cells_[i];
      bind.is_null = &cell.is_null;
      bind.length = &cell.length;
      bind.error = &cell.error;
      bind.buffer = &cell.integer;
      bind.buffer_type = MYSQL_TYPE_LONGLONG;
      if (classes[i] == Class::kReal) bind.buffer_type = MYSQL_TYPE_DOUBLE;
      if (is_text(i)) set_buffer(i, kFirstText);
    }
  }

  MYSQL_BIND* binds() { return binds_.data(); }

  // Texts that were longer than their room are fetched once more.
  bool take(MYSQL_STMT* statement, bool& grew) {
    for (size_t i = 0; i < classes_.size(); ++i) {
      Cell& cell = cells_[i];
      Argument& value = row_[i];
      value = {};
      if (cell.is_null) continue;
      if (!is_text(i)) {
        value = Argument::of(cell.integer);
        if (classes_[i] == Class::kReal) value.type = Argument::Type::kReal;
        continue;
      }
      if (cell.length > cell.text.size()) {
        set_buffer(i, cell.length);
        grew = true;
        if (mysql_stmt_fetch_column(statement, &binds_[i], static_cast<unsigned>(i), 0) != 0) return false;
      }
      value = Argument::of(std::string_view(cell.text.data(), cell.length));
      if (classes_[i] == Class::kWide) value = as_number(value);
      if (classes_[i] == Class::kBytes) value.type = Argument::Type::kBlob;
    }
    return true;
  }

  Row row() const { return row_; }

 private:
  struct Cell {
    my_bool is_null = 0;
    my_bool error = 0;
    unsigned long length = 0;
    int64_t integer = 0;
    std::string text;
  };

  // Whatever comes as one.
  bool is_text(size_t i) const {
    return classes_[i] == Class::kText || classes_[i] == Class::kBytes || classes_[i] == Class::kWide;
  }
  void set_buffer(size_t i, size_t size) {
    cells_[i].text.resize(size);
    binds_[i].buffer_type = MYSQL_TYPE_BLOB;
    binds_[i].buffer = cells_[i].text.data();
    binds_[i].buffer_length = size;
  }

  std::span<const Class> classes_;
  std::vector<MYSQL_BIND> binds_;
  std::vector<Cell> cells_;
  std::vector<Argument> row_;
};

// The rows that were not read go with it.
class Execution {
 public:
  explicit Execution(MYSQL_STMT* statement) : statement_(statement) {}
  ~Execution() { mysql_stmt_free_result(statement_); }
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;

 private:
  MYSQL_STMT* statement_;
};

}  // namespace

Connection::Connection(const Limits& limits)
    : limits_(limits),
      silence_(std::chrono::ceil<std::chrono::seconds>(std::max(limits.statement, limits.writer)) + kMargin) {
}

Connection::~Connection() {
  places_.clear();
  kept_.clear();
  if (mysql_ != nullptr) mysql_close(mysql_);
}

void Connection::abandon() {
  if (mysql_ == nullptr) return;
  const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nowhere < 0) {
    // Rather than to say good-bye in the parent's name: the memory and a descriptor stay.
    places_.clear();
    for (Kept& kept : kept_) static_cast<void>(kept.statement.release());
    mysql_ = nullptr;
    return;
  }
  dup2(nowhere, static_cast<int>(mysql_get_socket(mysql_)));
  close(nowhere);
}

Failure Connection::open(const Address& address, size_t& host) {
  Failure first;
  const size_t count = address.hosts.size();
  for (size_t tried = 0; tried < count; ++tried) {
    const size_t number = (host + tried) % count;
    Failure failure = connect(address, address.hosts[number]);
    if (!failure) {
      host = number;
      return {};
    }
    first.reason.append(first.reason.empty() ? "" : "; ").append(failure.reason);
    first.status = failure.status;
  }
  return first;
}

Failure Connection::connect(const Address& address, const Host& host) {
  places_.clear();
  kept_.clear();
  if (mysql_ != nullptr) mysql_close(mysql_);
  mysql_ = mysql_init(nullptr);
  if (mysql_ == nullptr) throw std::bad_alloc();
  host_ = describe(address, host);
  std::string password;
  const bool has_file = !address.password_file.empty();
  if (has_file) {
    if (Failure failure = read_password(address.password_file, password)) return failure;
  } else {
    mysql_optionsv(mysql_, MYSQL_READ_DEFAULT_GROUP, kOptionGroup);
  }
  const bool is_local = !address.socket.empty();
  const unsigned protocol = is_local ? MYSQL_PROTOCOL_SOCKET : MYSQL_PROTOCOL_TCP;
  mysql_optionsv(mysql_, MYSQL_OPT_PROTOCOL, &protocol);
  const unsigned wait = kConnectSeconds;
  mysql_optionsv(mysql_, MYSQL_OPT_CONNECT_TIMEOUT, &wait);
  const auto silence = static_cast<unsigned>(silence_.count());
  mysql_optionsv(mysql_, MYSQL_OPT_READ_TIMEOUT, &silence);
  mysql_optionsv(mysql_, MYSQL_OPT_WRITE_TIMEOUT, &silence);
  const my_bool no = 0;
  mysql_optionsv(mysql_, MYSQL_OPT_RECONNECT, &no);
  const unsigned no_files = 0;
  mysql_optionsv(mysql_, MYSQL_OPT_LOCAL_INFILE, &no_files);
  const size_t packet = size_t{128} << 20;
  mysql_optionsv(mysql_, MYSQL_OPT_MAX_ALLOWED_PACKET, &packet);
  const my_bool verifies = address.tls == Tls::kVerify ? 1 : 0;
  const my_bool encrypts = address.tls != Tls::kOff ? 1 : 0;
  mysql_optionsv(mysql_, MYSQL_OPT_SSL_ENFORCE, &encrypts);
  mysql_optionsv(mysql_, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verifies);
  if (!address.authority.empty()) mysql_optionsv(mysql_, MYSQL_OPT_SSL_CA, address.authority.c_str());
  // A refused connection is one of no user, whatever its number: nothing is read or written without it.
  if (mysql_real_connect(mysql_, is_local ? nullptr : host.name.c_str(), address.user.c_str(),
                         has_file ? password.c_str() : nullptr, address.database.c_str(), host.port,
                         is_local ? address.socket.c_str() : nullptr, 0) == nullptr)
    return {kStatusIo, failure().reason, Aftermath::kConnectionLost};
  return configure();
}

Failure Connection::configure() {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limits_.writer).count();
  const std::string time = std::to_string(std::chrono::duration<double>(limits_.statement).count());
  if (Failure failure = execute(kSettings + time +
                                ",innodb_lock_wait_timeout=" + std::to_string(std::max<int64_t>(seconds, 1))))
    return failure;
  return find_cluster();
}

// A node that does not belong to its cluster's majority takes connections and refuses all else. Another one's
// writes, and those that were made through another one, are waited for.
Failure Connection::find_cluster() {
  switch (membership()) {
    case Membership::kUnknown:
      return failure();
    case Membership::kNone:
      return {};
    case Membership::kCutOff:
      return said_by_host({kStatusIo, kNoMajority, Aftermath::kConnectionLost});
    case Membership::kOfMajority:
      break;
  }
  is_of_cluster_ = true;
  return execute("SET SESSION wsrep_sync_wait=15,wsrep_dirty_reads=0");
}

// Of all questions the one that a node answers whatever became of the others, and without waiting for them.
Connection::Membership Connection::membership() {
  constexpr std::string_view kReady = "SHOW GLOBAL STATUS WHERE Variable_name='wsrep_ready' AND @@wsrep_on";
  if (mysql_real_query(mysql_, kReady.data(), kReady.size()) != 0) return Membership::kUnknown;
  struct FreeRows {
    void operator()(MYSQL_RES* rows) const { mysql_free_result(rows); }
  };
  const std::unique_ptr<MYSQL_RES, FreeRows> rows(mysql_store_result(mysql_));
  if (rows == nullptr) return Membership::kUnknown;
  const MYSQL_ROW row = mysql_fetch_row(rows.get());
  if (row == nullptr) return Membership::kNone;
  const bool is_ready = row[1] != nullptr && std::strcmp(row[1], "ON") == 0;
  return is_ready ? Membership::kOfMajority : Membership::kCutOff;
}

Failure Connection::execute(const std::string& sql) {
  return mysql_real_query(mysql_, sql.data(), sql.size()) == 0 ? Failure{} : failure();
}

Failure Connection::begin() {
  Failure failure = execute("START TRANSACTION");
  is_in_transaction_ = !failure;
  return failure;
}

void Connection::rollback() {
  is_in_transaction_ = false;
  execute("ROLLBACK");
}

// A node that gives a transaction up while it prepares a statement for it never says so, and would make what
// follows without it.
Failure Connection::require_transaction() {
  if (!is_of_cluster_ || !is_in_transaction_) return {};
  if (Failure failure = execute("DO 0")) return failure;
  unsigned status = 0;
  mariadb_get_infov(mysql_, MARIADB_CONNECTION_SERVER_STATUS, &status);
  if ((status & SERVER_STATUS_IN_TRANS) != 0) return {};
  return said_by_host(failure_of(ER_LOCK_DEADLOCK, "another node's transaction was first"));
}

// How long it takes no limit says, and whoever stops waiting does not know what became of it.
Failure Connection::commit() {
  constexpr std::string_view kWord = "COMMIT";
  is_in_transaction_ = false;
  if (mysql_send_query(mysql_, kWord.data(), kWord.size()) != 0) return failure();
  const auto longer = std::chrono::milliseconds(std::max(kCommit - silence_, std::chrono::seconds(0)));
  pollfd answer{static_cast<int>(mysql_get_socket(mysql_)), POLLIN, 0};
  while (poll(&answer, 1, static_cast<int>(longer.count())) < 0 && errno == EINTR) {
  }
  return mysql_read_query_result(mysql_) == 0 ? Failure{} : failure();
}

MYSQL_STMT* Connection::find(const std::string& sql) {
  const auto place = places_.find(sql);
  if (place == places_.end()) return nullptr;
  kept_.splice(kept_.begin(), kept_, place->second);
  return kept_.front().statement.get();
}

// Before another one runs: to close a statement would take its rows.
void Connection::make_room() {
  if (kept_.size() < kPreparedStatements) return;
  places_.erase(kept_.back().sql);
  kept_.pop_back();
}

void Connection::keep(const std::string& sql, StatementPtr statement) {
  kept_.push_front({sql, std::move(statement)});
  places_.emplace(kept_.front().sql, kept_.begin());
}

// Prepared and run in one round trip. Not by a node of a cluster: one that aborts a transaction between the
// two loses the word of it. Nor with many values: the server would tell of each while nobody listens yet.
Failure Connection::execute_new(MYSQL_STMT* statement, const std::string& sql, std::span<MYSQL_BIND> values) {
  const auto count = static_cast<unsigned>(values.size());
  const auto bind = [&] { return count == 0 || mysql_stmt_bind_param(statement, values.data()) == 0; };
  if (is_of_cluster_ || count > kMostValuesAtOnce) {
    if (mysql_stmt_prepare(statement, sql.data(), sql.size()) != 0 || !bind()) return failure(statement);
    if (Failure lost = require_transaction()) return lost;
    return mysql_stmt_execute(statement) == 0 ? Failure{} : failure(statement);
  }
  mysql_stmt_attr_set(statement, STMT_ATTR_PREBIND_PARAMS, &count);
  const bool is_done = bind() && mariadb_stmt_execute_direct(statement, sql.data(), sql.size()) == 0;
  return is_done ? Failure{} : failure(statement);
}

Failure Connection::run(const std::string& sql, std::span<const Argument> arguments,
                        std::span<const Class> classes, const TakeRow& row) {
  std::vector<MYSQL_BIND> values = bind(arguments);
  MYSQL_STMT* statement = find(sql);
  if (statement == nullptr) {
    make_room();
    StatementPtr fresh(mysql_stmt_init(mysql_));
    if (fresh == nullptr) throw std::bad_alloc();
    if (Failure failure = execute_new(fresh.get(), sql, values)) return failure;
    statement = fresh.get();
    keep(sql, std::move(fresh));
  } else if ((!values.empty() && mysql_stmt_bind_param(statement, values.data()) != 0) ||
             mysql_stmt_execute(statement) != 0) {
    return failure(statement);
  }
  const Execution execution(statement);
  return classes.empty() ? Failure{} : fetch(statement, classes, row);
}

Failure Connection::fetch(MYSQL_STMT* statement, std::span<const Class> classes, const TakeRow& row) {
  Landing landing(classes);
  if (mysql_stmt_bind_result(statement, landing.binds()) != 0) return failure(statement);
  for (;;) {
    const int code = mysql_stmt_fetch(statement);
    if (code == MYSQL_NO_DATA) return {};
    bool grew = false;
    if ((code != 0 && code != MYSQL_DATA_TRUNCATED) || !landing.take(statement, grew))
      return failure(statement);
    if (!row(landing.row())) return {kStatusTooLarge, "the result is too large"};
    if (grew && mysql_stmt_bind_result(statement, landing.binds()) != 0) return failure(statement);
  }
}

Failure Connection::failure() {
  return understood(said_by_host(failure_of(mysql_errno(mysql_), mysql_error(mysql_))));
}

Failure Connection::failure(MYSQL_STMT* statement) {
  // What ends the rows is told to the connection.
  if (mysql_stmt_errno(statement) == 0) return failure();
  return understood(said_by_host(failure_of(mysql_stmt_errno(statement), mysql_stmt_error(statement))));
}

// A wait for what other nodes wrote ends like one for a lock, also where there are no other nodes any more.
Failure Connection::understood(Failure failure) {
  if (!is_of_cluster_ || failure.code != ER_LOCK_WAIT_TIMEOUT || membership() == Membership::kOfMajority)
    return failure;
  failure.reason.append(": ").append(kNoMajority);
  failure.status = kStatusIo;
  failure.aftermath = Aftermath::kConnectionLost;
  return failure;
}

Failure Connection::said_by_host(Failure failure) const {
  failure.reason.insert(0, host_ + ": ");
  return failure;
}

}  // namespace zymdb::client::mariadb
