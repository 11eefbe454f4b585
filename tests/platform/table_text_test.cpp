// The columns that a stored statement tells, beside those that SQLite itself tells.
#include "client/engine/sqlite/table_text.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>

#include "client/engine/schema.h"

namespace zymdb::client::sqlite {
namespace {

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Rows = std::vector<std::vector<std::string>>;

Database database_of(const std::string& statements) {
  sqlite3* raw = nullptr;
  sqlite3_open(":memory:", &raw);
  Database database(raw, &sqlite3_close);
  char* error = nullptr;
  EXPECT_EQ(sqlite3_exec(raw, statements.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
  sqlite3_free(error);
  return database;
}

Rows rows_of(const Database& database, const std::string& sql) {
  Rows rows;
  const auto add = [](void* all, int count, char** values, char**) {
    std::vector<std::string>& row = static_cast<Rows*>(all)->emplace_back();
    for (int i = 0; i < count; ++i) row.emplace_back(values[i] != nullptr ? values[i] : "NULL");
    return 0;
  };
  EXPECT_EQ(sqlite3_exec(database.get(), sql.c_str(), add, &rows, nullptr), SQLITE_OK) << sql;
  return rows;
}

std::string written(const std::vector<ColumnText>& columns) {
  std::string text;
  for (const ColumnText& column : columns) text += column.name + (column.is_text ? ":text\n" : "\n");
  return text;
}

// Of each table, as the statement and as SQLite tells them.
void expect_the_same(const std::string& statements) {
  const Database database = database_of(statements);
  const Rows tables = rows_of(database, "SELECT name, sql FROM sqlite_schema WHERE type='table'");
  EXPECT_FALSE(tables.empty());
  for (const auto& table : tables) {
    if (table[0].starts_with("sqlite_")) continue;
    std::vector<ColumnText> told;
    for (const auto& row : rows_of(database, "SELECT name, type FROM pragma_table_info('" + table[0] + "')"))
      told.push_back({row[0], row[1] == "TEXT"});
    std::vector<ColumnText> read;
    EXPECT_TRUE(read_columns(table[1], read)) << table[1];
    EXPECT_EQ(written(read), written(told)) << table[1];
  }
}

bool is_understood(const std::string& statement) {
  std::vector<ColumnText> columns;
  return read_columns(statement, columns);
}

TEST(TableTextTest, TellsTheColumnsOfTheSchemas) {
  expect_the_same(std::string(kInventorySchema.sql));
  expect_the_same(std::string(kPropertiesSchema.sql));
}

TEST(TableTextTest, TellsColumnsHoweverTheyAreWritten) {
  expect_the_same("CREATE TABLE a(b)");
  expect_the_same("create table if not exists a (b TEXT, c INTEGER, d)");
  expect_the_same("CREATE TABLE \"a (\" (\"b,\" TEXT, `c)` INTEGER, [d \"] BLOB, 'e' TEXT, \"f\"\"g\" TEXT)");
  expect_the_same(
      "CREATE TABLE a (b TEXT NOT NULL DEFAULT ')', c TEXT DEFAULT (1+(2)), d TEXT COLLATE NOCASE)");
  expect_the_same(
      "CREATE TABLE a (b VARCHAR(20), c DECIMAL(10, 2), d UNSIGNED BIG INT, e TEXT(3), f LONG TEXT)");
  expect_the_same(
      "CREATE TABLE a (b TEXT CHECK (b <> ','), c INTEGER REFERENCES a(b) ON DELETE SET NULL, d TEXT "
      "UNIQUE)");
  expect_the_same("CREATE TABLE a (b TEXT PRIMARY KEY, c TEXT CONSTRAINT d NOT NULL) WITHOUT ROWID");
  expect_the_same(
      "CREATE TABLE a (b TEXT, c, PRIMARY KEY (b, c), UNIQUE (c), CHECK (b > c), FOREIGN KEY (c) REFERENCES "
      "a(b), CONSTRAINT d CHECK (1))");
  expect_the_same("CREATE TABLE a (-- b TEXT,\n c TEXT, /* d, ) */ e TEXT /* f */, g -- the last\n)");
  expect_the_same("CREATE TABLE a (b TEXT, c INTEGER) STRICT");
}

TEST(TableTextTest, TellsWhatWasAddedLater) {
  expect_the_same(
      "CREATE TABLE a (b TEXT -- the first\n); ALTER TABLE a ADD COLUMN \"c\" TEXT; ALTER TABLE a ADD d");
  expect_the_same(
      "CREATE TABLE a (b TEXT, c); ALTER TABLE a RENAME TO d; ALTER TABLE d RENAME COLUMN b TO \"e f\"");
  expect_the_same("CREATE TABLE a (b TEXT); CREATE TABLE c AS SELECT b, 1 AS d FROM a");
}

TEST(TableTextTest, LeavesTheRestToTheEngine) {
  EXPECT_FALSE(is_understood("CREATE VIRTUAL TABLE a USING fts5(b)"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (b TEXT, c AS (b))"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (b TEXT, c TEXT GENERATED ALWAYS AS (b))"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (b text)"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (b \"TEXT\")"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (b TEXT"));
  EXPECT_FALSE(is_understood("CREATE TABLE a (\"b"));
  EXPECT_FALSE(is_understood("CREATE TABLE a ()"));
  EXPECT_FALSE(is_understood("CREATE TABLE"));
  EXPECT_FALSE(is_understood(""));
}

}  // namespace
}  // namespace zymdb::client::sqlite
