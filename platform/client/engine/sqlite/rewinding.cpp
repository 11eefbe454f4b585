#include "client/engine/sqlite/rewinding.h"

#include <vector>

#include "client/engine/sqlite/own_statements.h"
#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

constexpr char kAdded[] =
    "SELECT t.key, a.value->>0, a.value->>1 FROM json_each(?1) t, json_each(t.value, '$.added') a";

// Table, row, column, the form of a value that JSON has none for, and the value.
constexpr char kFormer[] =
    "SELECT t.key, CAST(r.key AS INTEGER), c.key, f.key, ifnull(f.value, c.value) "
    "FROM json_each(?1) t, json_each(t.value, '$.before') r, json_each(r.value) c "
    "LEFT JOIN json_each(CASE c.type WHEN 'object' THEN c.value END) f";

enum FormerColumn { kTable, kRow, kColumn, kForm, kValue };

std::string quoted(const std::string& name) {
  return "\"" + name + "\"";
}

std::string optional_text(sqlite3_stmt* row, int column) {
  return sqlite3_column_type(row, column) == SQLITE_NULL ? std::string() : text_of(row, column);
}

std::string from_hexadecimal(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return bytes;
}

void bind_bytes(sqlite3_stmt* statement, const std::string& form, const std::string& bytes) {
  if (form == "blob")
    sqlite3_bind_blob64(statement, 1, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
  else
    sqlite3_bind_text64(statement, 1, bytes.data(), bytes.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void bind_former_value(sqlite3_stmt* statement, sqlite3_stmt* cell) {
  const std::string form = optional_text(cell, kForm);
  if (form.empty())
    sqlite3_bind_value(statement, 1, sqlite3_column_value(cell, kValue));
  else if (form == "real")
    sqlite3_bind_double(statement, 1, sqlite3_column_double(cell, kValue));
  else
    bind_bytes(statement, form, from_hexadecimal(text_of(cell, kValue)));
}

Failure of_another_version(const std::string& what) {
  return {ZYM_DB_STATUS_ERROR, "the journal tells of \"" + what + "\", which this version does not know"};
}

}  // namespace

Failure Rewinding::run(uint64_t generation) {
  const auto target = static_cast<int64_t>(generation);
  if (Failure failure = check(target)) return failure;
  std::vector<std::string> accounts;
  const std::string sql = R"(SELECT "Changes" FROM "Journal" WHERE "Changes" IS NOT NULL AND "_id">)" +
                          std::to_string(target) + R"( ORDER BY "_id" DESC)";
  if (Failure failure =
          read_rows(database_, sql.c_str(), [&](sqlite3_stmt* row) { accounts.push_back(text_of(row, 0)); }))
    return failure;
  for (const std::string& account : accounts) {
    if (Failure failure = take_back(account)) return failure;
  }
  return forget_later(std::to_string(target));
}

// Generations without an account have no row of their own, the newest has.
Failure Rewinding::forget_later(const std::string& generation) {
  return execute(database_, R"(DELETE FROM "Journal" WHERE "_id">)" + generation +
                                R"(; INSERT INTO "Journal" ("_id", "Time", "Size") SELECT )" + generation +
                                R"(, max("Time"), ifnull(max("Size"), 0) FROM "Journal")" +
                                R"( HAVING ifnull(max("_id"), 0)<)" + generation);
}

Failure Rewinding::check(int64_t generation) {
  int64_t oldest = 0;
  int64_t newest = 0;
  if (Failure failure = read_number(database_, R"(SELECT ifnull(min("_id"), 0) FROM "Journal")", oldest))
    return failure;
  if (Failure failure = read_number(database_, R"(SELECT ifnull(max("_id"), 0) FROM "Journal")", newest))
    return failure;
  if (generation < oldest - 1)
    return {ZYM_DB_STATUS_ERROR, "the journal reaches back to generation " + std::to_string(oldest - 1)};
  if (generation > newest) return {ZYM_DB_STATUS_ERROR, "the newest generation is " + std::to_string(newest)};
  return {};
}

// No row is both.
Failure Rewinding::take_back(const std::string& account) {
  if (Failure failure = remove_added(account)) return failure;
  return restore_former(account);
}

Failure Rewinding::remove_added(const std::string& account) {
  sqlite3_stmt* range = nullptr;
  if (Failure failure = prepare(kAdded, range)) return failure;
  sqlite3_bind_text64(range, 1, account.data(), account.size(), SQLITE_STATIC, SQLITE_UTF8);
  int code = SQLITE_OK;
  while ((code = sqlite3_step(range)) == SQLITE_ROW) {
    const Table* const table = catalog_.table(text_of(range, 0));
    if (table == nullptr) return of_another_version(text_of(range, 0));
    sqlite3_stmt* removal = nullptr;
    if (Failure failure =
            prepare("DELETE FROM " + quoted(table->name()) + R"( WHERE "_id" BETWEEN ?1 AND ?2)", removal))
      return failure;
    sqlite3_bind_int64(removal, 1, sqlite3_column_int64(range, 1));
    sqlite3_bind_int64(removal, 2, sqlite3_column_int64(range, 2));
    if (Failure failure = step(removal)) return failure;
  }
  sqlite3_reset(range);
  return code == SQLITE_DONE ? Failure{} : failure(code);
}

Failure Rewinding::restore_former(const std::string& account) {
  sqlite3_stmt* cell = nullptr;
  if (Failure failure = prepare(kFormer, cell)) return failure;
  sqlite3_bind_text64(cell, 1, account.data(), account.size(), SQLITE_STATIC, SQLITE_UTF8);
  int code = SQLITE_OK;
  while ((code = sqlite3_step(cell)) == SQLITE_ROW) {
    if (Failure failure = restore(cell)) return failure;
  }
  sqlite3_reset(cell);
  return code == SQLITE_DONE ? Failure{} : failure(code);
}

// A row that is gone comes back with its first column.
Failure Rewinding::restore(sqlite3_stmt* cell) {
  const std::string name = text_of(cell, kColumn);
  const Table* const table = catalog_.table(text_of(cell, kTable));
  const Column* const column = table != nullptr ? table->column(name) : nullptr;
  if (column == nullptr) return of_another_version(text_of(cell, kTable) + "." + name);
  const std::string quoted_table = quoted(table->name());
  sqlite3_stmt* row = nullptr;
  if (Failure failure = prepare("INSERT OR IGNORE INTO " + quoted_table + R"( ("_id") VALUES (?1))", row))
    return failure;
  sqlite3_bind_int64(row, 1, sqlite3_column_int64(cell, kRow));
  if (Failure failure = step(row)) return failure;
  sqlite3_stmt* update = nullptr;
  if (Failure failure = prepare(
          "UPDATE " + quoted_table + " SET " + quoted(column->name) + R"(=?1 WHERE "_id"=?2)", update))
    return failure;
  bind_former_value(update, cell);
  sqlite3_bind_int64(update, 2, sqlite3_column_int64(cell, kRow));
  return step(update);
}

Failure Rewinding::prepare(const std::string& sql, sqlite3_stmt*& statement) {
  StatementPtr& kept = statements_[sql];
  if (kept == nullptr) {
    sqlite3_stmt* raw = nullptr;
    const int code = sqlite3_prepare_v2(database_, sql.c_str(), -1, &raw, nullptr);
    kept.reset(raw);
    if (code != SQLITE_OK) return failure(code);
  }
  statement = kept.get();
  return {};
}

Failure Rewinding::step(sqlite3_stmt* statement) {
  const int code = sqlite3_step(statement);
  sqlite3_reset(statement);
  return code == SQLITE_DONE ? Failure{} : failure(code);
}

}  // namespace zymdb::client::sqlite
