// A test on an embedded database of its own: a new, empty inventory in a folder that vanishes with the test.
#ifndef ZYMDB_TESTS_SUPPORT_INVENTORY_H
#define ZYMDB_TESTS_SUPPORT_INVENTORY_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "controller/database_client.h"
#include "support/temporary_folder.h"

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

  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  TemporaryFolder folder_;
};

#endif
