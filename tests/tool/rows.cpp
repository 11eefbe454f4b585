#include "tool/rows.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "controller/database_client.h"

namespace zymdb::test {
namespace {

void put(zym_db_content_values_t* values, const ColumnValue& column) {
  const auto& [name, value] = column;
  const int status = std::holds_alternative<unsigned>(value)
                         ? zym_db_content_put_uint(values, name, std::get<unsigned>(value))
                         : zym_db_content_put_text(values, name, std::get<std::string>(value).c_str());
  EXPECT_EQ(status, 0) << name;
}

}  // namespace

void insert_row(const Workplace& workplace, const char* table, const std::vector<ColumnValue>& row) {
  ASSERT_EQ(setenv("ZYMDB_INVENTORY", workplace.inventory().c_str(), 1), 0);
  auto* handle = get_dmdb_handle();
  ASSERT_NE(handle, nullptr);
  auto* values = zym_db_get_content_values(handle);
  for (const auto& column : row) put(values, column);
  EXPECT_GT(insert_db_record(handle, table, values), 0);
  zym_db_free_content_values(values);
  zym_db_close(handle);
}

}  // namespace zymdb::test
