// Every allocation of every exported operation fails once, each in turn: the library's, the database client's
// and the engine's, on a thread that runs its statements for the first time.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>

#include "faults/example_rows.h"
#include "faults/failing_allocator.h"
#include "faults/operations.h"
#include "faults/shared_files.h"
#include "support/inventory.h"
#include "zymdb_db.h"
#include "zymdb_platform.h"

namespace faults {

void PrintTo(const Operation& operation, std::ostream* stream);
void PrintTo(const Operation& operation, std::ostream* stream) {
  *stream << operation.name;
}

namespace {

constexpr int kNone = -1;

// More than any operation makes.
constexpr int kMostAllocations = 10'000;

struct Observed {
  Outcome outcome;
  bool failed;  // an allocation did
};

// Drives all other statements out of the session's cache. These are short, because they are run for each
// allocation that fails; the operators tell them apart.
void forget_statements() {
  constexpr const char* kOperators[] = {"=", "!=", "<", "<=", ">", ">=", "AND", "OR", "+"};
  for (const char* first : kOperators)
    for (const char* second : kOperators) {
      const std::string statement = std::string("SELECT 1 ") + first + " 1 " + second + " 1";
      zym_db_result_t* result = nullptr;
      ASSERT_EQ(
          zym_db_raw_query(get_dmdb_handle(), statement.c_str(), static_cast<int>(statement.size()), &result),
          ZYM_DB_STATUS_OK)
          << statement;
      zym_db_free_result(result);
    }
}

template <class Call>
Observed call_without_allocation(int number, Call call) {
  failing_allocator::fail(number);
  Outcome outcome = call();
  const bool failed = failing_allocator::stop();
  return {std::move(outcome), failed};
}

// Outcomes that are neither the usual one nor ZYM_DB_STATUS_NO_MEMORY: what each operation answers when one
// of its steps fails, for whatever reason.
const std::multimap<std::string, Outcome> kOtherOutcomes = {
    {"find_db_record", {-1}},
    {"insert_db_record", {-1}},
    {"update_db_record", {-1}},
    {"insert_or_update_db_record", {-1}},
    {"get_sql_str", {0, ""}},
    {"zymdb_is_amd", {0}},
    {"zymdb_get_pci_keys", {0, "none"}},
    {"zymdb_get_dpu_keys", {0, "none"}},
    {"zymdb_get_pci_vpd_info", {ZYM_DB_STATUS_INVALID_PARAM, "untouched"}},
    {"zymdb_get_adapter_pcikey_by_slotNo", {ZYM_DB_STATUS_NO_DB, "untouched"}},
    {"zymdb_get_ncsi_id_by_slotNo", {ZYM_DB_STATUS_NO_DB, "untouched"}},
    {"zymdb_update_nvidia_gpu_fw_version", {ZYM_DB_STATUS_NOT_FOUND}},
    {"zymdb_update_nvidia_gpu_fw_release_date", {ZYM_DB_STATUS_NOT_FOUND}},
    {"zymdb_update_nvidia_gpu_serial_number", {ZYM_DB_STATUS_NOT_FOUND}},
    {"zymdb_get_pci_firmware_list", {ZYM_DB_STATUS_INVALID_PARAM, "none"}},
    {"zymdb_insert_or_update_firmware_info", {ZYM_DB_STATUS_ERROR}},
    {"zymdb_update_dpu_uefi_version", {ZYM_DB_STATUS_NOT_FOUND}},
    {"zymdb_get_dpu_uefi_version", {ZYM_DB_STATUS_NOT_FOUND, "untouched"}},
    {"extract_PCISetting_info", {ZYM_DB_STATUS_ERROR}},
    {"zymdb_save_pci_configSet_list", {ZYMDB_PCI_SETTING_ID_NOEXIT, "untouched"}},
    {"zymdb_save_pci_configSet_list", {ZYMDB_PCI_SETTING_BIOS_SET_FAIL, "written"}},
    {"fileexist", {0}},
    {"zymdb_nvme_aim_disk_exist", {0}},
    {"zymdb_get_mvl_ctrl_type", {ZYM_DB_STATUS_NO_DB, "untouched"}},
    {"zymdb_get_bp_drive_count", {ZYM_DB_STATUS_NO_DB, "untouched"}},
    {"zymdb_get_nvme_disk_list_from_mi_filter", {ZYM_DB_STATUS_NO_DB, "none"}},
    {"zymdb_get_7mm_disk_list", {ZYM_DB_STATUS_NO_DB, "none"}},
    {"zymdb_get_merged_disk_list", {0, "1 listed"}},
    {"zymdb_get_merged_disk_list", {0, "none"}},
    {"zymdb_get_u2_aic_nvme_disk_list", {0, "1 listed"}},
    {"zymdb_get_disk_list_funkey", {ZYM_DB_STATUS_NOT_FOUND, "none"}},
    {"zymdb_get_nvme_aim_disk", {ZYM_DB_STATUS_INVALID_PARAM, "untouched"}},
};

bool is_expected(const std::string& operation, const Outcome& outcome, const Outcome& usual) {
  if (outcome == usual || outcome.status == ZYM_DB_STATUS_NO_MEMORY) return true;
  const auto [first, last] = kOtherOutcomes.equal_range(operation);
  return std::any_of(first, last, [&](const auto& other) { return other.second == outcome; });
}

class AllocationFaultTest : public InventoryTest {
 protected:
  AllocationFaultTest() { setenv("ZYMDB_LOG", "system", 1); }

  // What the rows do not state holds 1.
  void given_example_rows() {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((folder() / "inventory.db").c_str(), &database), SQLITE_OK);
    for (const auto& [table, rows] : example_rows())
      for (const ExampleRow& row : rows) {
        if (table == "propertiesDCTbl")
          given_property(std::get<std::string>(row.at("propName")).c_str(),
                         std::get<std::string>(row.at("propValue")).substr(1));
        else
          insert(database, table, row);
      }
    sqlite3_close(database);
  }

  // The operation with each of its allocations failing.
  void sweep(const Operation& operation) {
    const SharedFiles shared_files(operation.name);
    const Outcome usual = call_without_allocation(kNone, operation.call).outcome;
    for (int number = 0;; ++number) {
      ASSERT_LT(number, kMostAllocations) << "failed calls leave something behind";
      forget_statements();
      const auto [outcome, failed] = call_without_allocation(number, operation.call);
      EXPECT_NE(outcome.outputs, "torn") << number;
      EXPECT_TRUE(is_expected(operation.name, outcome, usual)) << outcome << " without allocation " << number;
      if (failed) continue;
      EXPECT_EQ(outcome, usual) << "when memory is there again";
      return;
    }
  }

 private:
  static void insert(sqlite3* database, const std::string& table, const ExampleRow& row) {
    std::string columns;
    std::string values;
    sqlite3_stmt* statement = nullptr;
    const std::string sql = "SELECT name FROM pragma_table_info('" + table + "') WHERE name<>'_id'";
    ASSERT_EQ(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      const std::string column = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      const auto stated = row.find(column);
      const Value value = stated != row.end() ? stated->second : Value(int64_t{1});
      const auto* number = std::get_if<int64_t>(&value);
      columns += "," + column;
      values +=
          "," + (number != nullptr ? std::to_string(*number) : "'" + std::get<std::string>(value) + "'");
    }
    sqlite3_finalize(statement);
    ASSERT_EQ(
        sqlite3_exec(database,
                     ("INSERT INTO " + table + " (_id" + columns + ") VALUES (NULL" + values + ")").c_str(),
                     nullptr, nullptr, nullptr),
        SQLITE_OK)
        << table << columns << values;
  }
};

class AllocationFault : public AllocationFaultTest, public testing::WithParamInterface<Operation> {};

TEST_P(AllocationFault, IsToldOrMadeUpForAmongRows) {
  given_example_rows();
  sweep(GetParam());
}

TEST_P(AllocationFault, IsToldOrMadeUpForInAnEmptyInventory) {
  sweep(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Operation, AllocationFault, testing::ValuesIn(operations()),
                         [](const auto& operation) { return std::string(operation.param.name); });

// A thread's first call opens its session with the database.
class OpeningWithoutMemory : public AllocationFaultTest {};

TEST_F(OpeningWithoutMemory, IsToldAndTheNextCallOpensTheDatabase) {
  int failures = 0;
  for (int number = 0;; ++number) {
    Observed observed{};
    Outcome next{};
    std::thread([&] {
      const Operation& read = operation("zymdb_get_processor_list");
      observed = call_without_allocation(number, read.call);
      next = read.call();
    }).join();
    EXPECT_EQ(next, (Outcome{ZYM_DB_STATUS_OK, "empty array"})) << number;
    if (!observed.failed) break;
    failures += observed.outcome.status != ZYM_DB_STATUS_OK ? 1 : 0;
    EXPECT_TRUE(observed.outcome == next || observed.outcome.status == ZYM_DB_STATUS_NO_MEMORY)
        << observed.outcome << " without allocation " << number;
  }
  EXPECT_GT(failures, 100);
}

// What is told about a failure needs no memory: it is the failure that the call answered, whichever
// allocation was missing.
TEST_F(OpeningWithoutMemory, IsTheThreadsLastError) {
  const auto fails = [] {
    zym_db_result_t* rows = nullptr;
    return zym_db_query(get_dmdb_handle(), "PCIs", nullptr, 0, "FunKey=1 AND", nullptr, 0, 0, &rows);
  };
  for (int number = 0;; ++number) {
    ASSERT_LT(number, kMostAllocations);
    int answered = 0;
    int told = 0;
    std::string text;
    bool failed = false;
    std::thread([&] {
      failing_allocator::fail(number);
      answered = fails();
      failed = failing_allocator::stop();
      text = zym_db_last_error(&told);
    }).join();
    EXPECT_NE(answered, 0) << number;
    EXPECT_EQ(told, answered) << number;
    EXPECT_NE(text, "") << number;
    if (failed) continue;
    EXPECT_EQ(text, "query of PCIs where FunKey=1 AND failed: incomplete input (status 1)");
    EXPECT_GT(number, 100);
    return;
  }
}

// What opens and closes by itself leaves nothing behind, however far it comes: the third try without the same
// allocation holds no more than the second.
TEST_F(OpeningWithoutMemory, OfAnotherDatabaseHoldsNothing) {
  const auto open_and_close = [] { zym_db_close(zym_db_open("localhost", "root", "", "propertiesdb", 0)); };
  open_and_close();
  for (int number = 0;; ++number) {
    ASSERT_LT(number, kMostAllocations);
    bool failed = false;
    const auto try_without = [&] {
      // A thread of its own has no idle connection.
      std::thread([&] {
        failing_allocator::fail(number);
        open_and_close();
        failed = failing_allocator::stop();
      }).join();
      return failing_allocator::live();
    };
    try_without();
    const long held = try_without();
    EXPECT_EQ(try_without(), held) << number;
    if (failed) continue;
    EXPECT_GT(number, 100);
    return;
  }
}

}  // namespace
}  // namespace faults
