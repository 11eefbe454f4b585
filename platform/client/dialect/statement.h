// One call of the client as one statement for the engine: a key that equal shapes share, the SQL for the
// first of them, and the arguments of this one.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_STATEMENT_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_STATEMENT_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/content_values.h"
#include "client/dialect/dialect.h"
#include "client/dialect/known_columns.h"
#include "client/dialect/known_conditions.h"
#include "zymdb_db.h"

namespace zymdb::client {

// What a call of the client asks for. Everything belongs to the caller and outlives the statement's use.
struct Request {
  enum class Kind : char { kQuery = 'q', kRaw = 'r', kInsert = 'i', kUpdate = 'u', kDelete = 'd' };

  Kind kind = Kind::kQuery;
  std::string_view table;                 // kRaw: empty
  std::span<const char* const> columns;   // kQuery: none means all
  const ContentValues* values = nullptr;  // kInsert, kUpdate
  const char* where = nullptr;            // null: all rows; kRaw: unused
  std::string_view sql;                   // kRaw
  std::span<const _zym_db_param_t> params;
};

class Statement {
 public:
  // Returns 0, or the status with which the call is refused; reason() tells why.
  int compose(const Catalog& catalog, const Request& request);

  Request::Kind kind() const { return request_.kind; }
  const Table* table() const { return table_; }
  std::string_view reason() const { return reason_; }

  // Equal keys mean equal SQL.
  std::string_view key() const { return key_; }
  std::span<const Argument> arguments() const { return arguments_; }

  // The engine's text. False when a column does not exist; then reason() tells.
  bool sql(std::string& out);

  // Whether the engine's text gives the rows to the flavour's function rather than back. After sql().
  bool is_gathered() const { return is_gathered_; }

  // The names by which a query's result finds its columns; empty where the engine names them. After sql().
  std::vector<std::string> take_column_names() { return std::move(column_names_); }

  // A read that finds a row exactly when the update or delete would change one. It lets an unchanged report
  // end without a write. Only with a condition.
  bool has_probe() const { return is_change() && request_.where != nullptr; }
  std::string_view probe_key() const { return std::string_view(key_).substr(probe_begin_); }
  std::string probe_sql() const;
  std::span<const Argument> probe_arguments() const { return std::span(arguments_).subspan(value_count_); }

  // The call in words, for the log.
  std::string describe() const;

 private:
  // What a query's columns are.
  struct Columns {
    bool are_plain = true;
    bool has_aggregate = false;
    bool has_other = false;
  };

  bool is_change() const { return kind() == Request::Kind::kUpdate || kind() == Request::Kind::kDelete; }
  int translate(const Catalog& catalog);
  int fill_placeholders();
  void add_values();
  void build_key();
  bool query_sql(std::string& out);
  bool append_columns(std::string& out, Columns& columns);
  bool insert_sql(std::string& out);
  bool update_sql(std::string& out);
  bool append_value_columns(std::string& out, std::string_view after);
  void append_all_columns(std::string& out);
  void append_condition(std::string& out, bool count_rows) const;
  void append_changed_rows(std::string& out) const;
  int refuse(std::string_view reason, int status);

  Request request_;
  const Flavour* flavour_ = &kStandardSql;
  const Table* table_ = nullptr;
  Translation condition_;
  KnownConditions known_;
  KnownColumns known_columns_;
  std::vector<Argument> arguments_;
  size_t value_count_ = 0;
  std::string key_;
  size_t probe_begin_ = 0;
  bool is_gathered_ = false;
  std::vector<std::string> column_names_;
  std::string_view reason_;
};

}  // namespace zymdb::client

#endif
