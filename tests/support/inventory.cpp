#include "support/inventory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/sql.h"
#include "support/test_database.h"
#include "zymdb_platform.h"

InventoryTest::InventoryTest() {
  setenv("ZYMDB_INVENTORY", folder_.file("inventory.db").c_str(), 1);
#ifdef ZYMDB_TEST_MARIADB
  if (TestDatabase::is_wanted()) {
    database_ = std::make_shared<TestDatabase>();
    setenv("ZYMDB_INVENTORY", database_->address().c_str(), 1);
  }
#endif
  setenv("ZYMDB_LOG", "stderr", 1);
  if (get_dmdb_handle() == nullptr) throw std::runtime_error("no inventory in " + folder().string());
}

InventoryTest::~InventoryTest() {
  if (_zym_db_handle_t* handle = get_dmdb_handle(); handle != nullptr) zym_db_close(handle);
}

void InventoryTest::lose_database() {
  zym_db_close(get_dmdb_handle());
  setenv("ZYMDB_INVENTORY", folder_.file("missing/inventory.db").c_str(), 1);
#ifdef ZYMDB_TEST_MARIADB
  if (database_ != nullptr)
    setenv("ZYMDB_INVENTORY", TestDatabase::address_of(database_->name() + "_missing").c_str(), 1);
#endif
  ASSERT_EQ(get_dmdb_handle(), nullptr);
}

std::string InventoryTest::written() const {
#ifdef ZYMDB_TEST_MARIADB
  if (database_ != nullptr) return database_->run("SELECT * FROM zymdb_schemas");
#endif
  std::string text;
  for (const char* name : {"inventory.db", "inventory.db-wal"}) {
    std::ifstream file(folder() / name, std::ios::binary);
    text.append(std::istreambuf_iterator<char>(file), {});
    std::error_code missing;
    text += std::to_string(last_write_time(folder() / name, missing).time_since_epoch().count());
  }
  return text;
}

std::string InventoryTest::run_sql(const std::string& sql) const {
#ifdef ZYMDB_TEST_MARIADB
  if (database_ != nullptr) return database_->run(sql);
#endif
  return run_sql_on(folder() / "inventory.db", sql);
}

int64_t InventoryTest::given(const char* table, std::initializer_list<Column> row) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  for (const Column& column : row) {
    if (const auto* number = std::get_if<int64_t>(&column.value))
      zym_db_content_put_uint(values, column.name, static_cast<unsigned>(*number));
    else if (const auto* text = std::get_if<std::string>(&column.value))
      zym_db_content_put_text(values, column.name, text->c_str());
    else
      zym_db_content_put_null(values, column.name);
  }
  int64_t id = 0;
  EXPECT_EQ(zym_db_insert(handle, table, values, 0, &id), ZYM_DB_STATUS_OK) << table;
  zym_db_free_content_values(values);
  return id;
}

void InventoryTest::given_property(const char* path, std::string_view value) {
  const std::string blob = '\4' + std::string(value);
  _zym_db_handle_t* const handle = zym_db_open("localhost", "root", "", "propertiesdb", 0);
  ASSERT_NE(handle, nullptr);
  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  zym_db_content_put_text(values, "propName", path);
  zym_db_content_put_blob(values, "propValue", blob.data(), static_cast<int>(blob.size()));
  int64_t id = 0;
  EXPECT_EQ(zym_db_insert(handle, "propertiesDCTbl", values, 0, &id), ZYM_DB_STATUS_OK) << path;
  zym_db_free_content_values(values);
  zym_db_close(handle);
}

std::string InventoryTest::rows(const char* table, std::initializer_list<const char*> columns,
                                const char* filter) {
  zym_db_result_t* result = nullptr;
  const std::string ordered = std::string(filter != nullptr ? filter : "1") + " ORDER BY _id";
  EXPECT_EQ(zym_db_query(get_dmdb_handle(), table, columns.begin(), static_cast<int>(columns.size()),
                         ordered.c_str(), nullptr, 0, 0, &result),
            ZYM_DB_STATUS_OK);
  std::string text;
  while (result != nullptr && zym_db_result_step(result) == ZYM_DB_STATUS_ROW) {
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
      char cell[2048];
      if (i > 0) text += '|';
      text += zym_db_result_column_text(result, i, cell, sizeof cell) == ZYM_DB_STATUS_OK ? cell : "NULL";
    }
    text += '\n';
  }
  if (result != nullptr) zym_db_free_result(result);
  return text;
}
