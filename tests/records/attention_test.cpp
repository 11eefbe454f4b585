// What deserves a look: told of each record's values by themselves, as they are read back from a file, and
// marked in whichever cells show it.
#include <gtest/gtest.h>

#include <algorithm>

#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "records/network.h"
#include "records/pci.h"
#include "records/storage.h"
#include "support/inventory.h"

namespace zymdb::records {
namespace {

class Attentions : public InventoryTest {
 protected:
  // "FIELD" of each value that warns by itself, row by row; each row's cells warn when one of these does.
  static std::string warnings(const RecordType& type) {
    std::string text;
    const auto sheet = type.list(all_fields(type));
    for (const auto& row : sheet.rows) {
      std::string of_row;
      for (size_t i = 0; i < row.size(); ++i) {
        if (attention_of(sheet.fields[i], row[i].value) == Attention::kWarning)
          of_row += (of_row.empty() ? "" : " ") + std::string(sheet.fields[i].heading);
      }
      const bool is_marked =
          std::ranges::find(row, Attention::kWarning, &records::Cell::attention) != row.end();
      EXPECT_EQ(is_marked, !of_row.empty()) << type.name;
      text += of_row + "\n";
    }
    return text;
  }
};

TEST_F(Attentions, AreDueToProcessorsThatAreSwitchedOff) {
  for (const int status : {0x41, 0x42, 0x43, 0x44, 0x01, 0x00}) given("Processor", {{"Status", status}});
  EXPECT_EQ(warnings(processors()), "\nSTATE\nSTATE\n\n\n\n");
}

TEST_F(Attentions, AreDueToModulesThatReportPoorHealth) {
  given("Memory", {{"SlotNo", 1}, {"MemSize", 1}, {"InfoMask", 1}, {"HealthStatus", 0}});
  given("Memory", {{"SlotNo", 2}, {"MemSize", 1}, {"InfoMask", 1}, {"HealthStatus", 2}});
  given("Memory", {{"SlotNo", 3}, {"MemSize", 1}, {"InfoMask", 1}, {"HealthStatus", 77}});
  given("Memory", {{"SlotNo", 4}, {"MemSize", 1}, {"InfoMask", 0}, {"HealthStatus", 2}});
  EXPECT_EQ(warnings(memory_modules()), "\nHEALTH\nHEALTH\n\n");
}

TEST_F(Attentions, AreDueToLinksThatAreReduced) {
  given("PCIs",
        {{"FunKey", 0}, {"ClsCode", 0x060400}, {"LanesInUse", 8}, {"MaxLanes", 16}, {"FunctionNo", 0}});
  given("PCIs", {{"FunKey", 0x10000}, {"BridgeId", 0}, {"BusNo", 1}, {"LanesInUse", 8}, {"MaxLanes", 16}});
  given("PCIs", {{"FunKey", 0x20000}, {"BusNo", 2}, {"LanesInUse", 8}, {"MaxLanes", 16}});
  EXPECT_EQ(warnings(functions(std::make_shared<std::string>(kPciIdsFile))), "LINKSTATE\nLINKSTATE\n\n");
}

TEST_F(Attentions, AreDueToUpdatesThatFailed) {
  given("PldmDeviceFirmware", {{"SoftwareID", "1"}, {"Updated", 1}, {"UpdateErrCode", 0}, {"Status", 2}});
  given("PldmDeviceFirmware", {{"SoftwareID", "2"}, {"Updated", 1}, {"UpdateErrCode", 9}});
  given("PldmDeviceFirmware", {{"SoftwareID", "3"}, {"Updated", 1}, {"UpdateErrCode", 9}, {"Status", 2}});
  given("PldmDeviceFirmware", {{"SoftwareID", "4"}, {"Updated", 0}, {"UpdateErrCode", 9}});
  EXPECT_EQ(warnings(pldm_devices()), "\nUPDATE\nUPDATE\n\n");
}

TEST_F(Attentions, AreDueToDrivesThatWarn) {
  const auto list = drives([](_ZYMDB_AimDisk_List* disks) {
    disks->disks = static_cast<_ZYMDB_AimDisk*>(std::calloc(4, sizeof(_ZYMDB_AimDisk)));
    disks->count = 4;
    for (uint8_t i = 0; i < 4; ++i) disks->disks[i].BayNo = i;
    for (const int quiet : {0, 1, 2}) disks->disks[quiet].HealthStatusId = 2;
    disks->disks[1].InfoMask = 1;
    disks->disks[1].Warning = 4;
    disks->disks[2].Warning = 4;
    return ZYM_DB_STATUS_OK;
  });
  EXPECT_EQ(warnings(list), "\nWARNING\n\nHEALTH\n");
}

// A port without a link is no fault.
TEST_F(Attentions, AreNotDueToPortsThatAreDown) {
  const FieldInfo* link = nullptr;
  const auto type = physical_ports([] { return PortOwner(); });
  for (const auto& field : type.fields) {
    if (std::string_view(field.key) == "Link") link = &field;
  }
  ASSERT_NE(link, nullptr);
  EXPECT_EQ(attention_of(*link, Value("up")), Attention::kNone);
  EXPECT_EQ(attention_of(*link, Value("down")), Attention::kAbsent);
  EXPECT_EQ(attention_of(*link, Value()), Attention::kNone);
}

}  // namespace
}  // namespace zymdb::records
