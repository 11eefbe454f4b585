// The columns of the rows that the collector makes are those of the schema, numbers where it has numbers.
#include <gtest/gtest.h>

#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "collect/collector.h"
#include "collect/machines.h"
#include "collect/rows/table_content.h"
#include "collect/steps/drive_step.h"
#include "collect/steps/firmware_step.h"
#include "collect/steps/pci_steps.h"
#include "collect/steps/port_step.h"
#include "collect/steps/smbios_steps.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

// "INTEGER" or "TEXT"; empty where the schema has no such column.
std::string schema_type(const std::string& schema, const TableContent& content, const char* column) {
  const size_t start = schema.find("CREATE TABLE \"" + std::string(content.table) + "\"");
  if (start == std::string::npos) return "";
  const std::string table = schema.substr(start, schema.find(");", start) - start);
  std::smatch match;
  const std::regex line("\n  \"" + std::string(column) + "\" +(\\w+)");
  return std::regex_search(table, match, line) ? match[1].str() : "";
}

bool is_of(Kind kind, const Value& value) {
  return value.is_null() ||
         (kind == Kind::kNumber ? value.as_number() != nullptr : value.as_text() != nullptr);
}

class ColumnKinds : public InventoryTest {
 protected:
  // The rows of the example server, of every class.
  static std::vector<TableContent> tables() {
    const TemporaryFolder tree;
    output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + tree.path().string() + "'");
    Sources sources{.lspci = ZYMDB_EXAMPLE_SERVER "/server.lspci",
                    .smbios = ZYMDB_EXAMPLE_SERVER "/server.smbios",
                    .sysfs = tree.path().string()};
    sources.allow_empty = true;
    const Observer nobody;
    const Survey survey(sources, nobody, true);
    std::vector<TableContent> all;
    for (const Step step : {collect_system, collect_processors, collect_memory, collect_system_firmware,
                            collect_functions, collect_adapters, collect_vital_product_data, collect_gpus,
                            collect_ports, collect_firmware, collect_drives}) {
      for (auto& content : step(survey)({get_dmdb_handle(), {}})) all.push_back(std::move(content));
    }
    return all;
  }
};

TEST_F(ColumnKinds, AreThoseOfTheSchemaAndOfTheValues) {
  const std::string schema = read_file(ZYMDB_EXAMPLE_SERVER "/../../schema/inventory.sql");
  const auto contents = tables();
  EXPECT_EQ(contents.size(), 17U);
  for (const auto& content : contents) {
    for (size_t i = 0; i < content.columns.size(); ++i) {
      const auto& [name, role, kind] = content.columns[i];
      const std::string type = kind == Kind::kNumber ? "INTEGER" : "TEXT";
      EXPECT_EQ(schema_type(schema, content, name), type) << content.table << "." << name;
      for (const auto& row : content.rows) {
        EXPECT_EQ(row.values.size(), content.columns.size());
        EXPECT_TRUE(is_of(kind, row.values[i])) << content.table << "." << name;
      }
    }
  }
}

TEST_F(ColumnKinds, OwnersAndFunctionsAreNamedByColumnsThatAreThere) {
  for (const auto& content : tables()) {
    const std::vector<Value> nothing(content.columns.size());
    for (const auto& test : {content.is_foreign, content.keeps}) {
      if (test) {
        EXPECT_NO_THROW(test(content, nothing)) << content.table;
      }
    }
    if (content.function_column != nullptr) {
      EXPECT_LT(content.position_of(content.function_column), content.columns.size()) << content.table;
    } else {
      EXPECT_TRUE(content.kept.keys.empty()) << content.table;
    }
  }
}

TEST_F(ColumnKinds, EveryTableWithAFunctionInItSaysWhere) {
  for (const auto& content : tables()) {
    for (const char* column : {"FunKey", "PCIFuncKey"}) {
      if (content.position_of(column) == content.columns.size()) continue;
      EXPECT_STREQ(content.function_column, column);
    }
  }
}

}  // namespace
}  // namespace zymdb::collect
