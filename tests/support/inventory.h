// A test on a database of its own: a new, empty inventory that vanishes with the test. It is embedded, in a
// folder of the test's, or of the server that ZYMDB_TEST_SERVER names.
#ifndef ZYMDB_TESTS_SUPPORT_INVENTORY_H
#define ZYMDB_TESTS_SUPPORT_INVENTORY_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "controller/database_client.h"
#include "support/temporary_folder.h"

class TestDatabase;

class InventoryTest : public testing::Test {
 protected:
  using Cell = std::variant<std::nullptr_t, int64_t, std::string>;
  struct Column {
    template <class Value>
    Column(const char* column, Value content) : name(column), value(cell(std::move(content))) {}

    template <class Value>
    static Cell cell(Value content) {
      if constexpr (std::is_integral_v<Value>)
        return static_cast<int64_t>(content);
      else if constexpr (std::is_same_v<Value, const char*>)
        return std::string(content);
      else
        return content;
    }

    const char* name;
    Cell value;
  };

  InventoryTest();
  ~InventoryTest() override;

  // given("PCIAdapter", {{"PCIKey", 7}, {"CardName", "a card"}, {"ConnectorType", nullptr}});
  static int64_t given(const char* table, std::initializer_list<Column> row);

  // A property of the property database beside the inventory: its value follows a byte that describes it.
  static void given_property(const char* path, std::string_view value);

  // The table's rows, in order of "_id", as one text: "7|a card|NULL\n".
  static std::string rows(const char* table, std::initializer_list<const char*> columns,
                          const char* filter = nullptr);

  // From here on there is no database.
  void lose_database();

  // All that has been written so far: equal only where nothing was written in between.
  std::string written() const;

  // Statements in the hands of another program. What they find: a line for each row, its values separated by
  // "|".
  std::string run_sql(const std::string& sql) const;
  bool is_embedded() const { return database_ == nullptr; }

  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  TemporaryFolder folder_;
  std::shared_ptr<TestDatabase> database_;  // null for an embedded one
};

#endif
