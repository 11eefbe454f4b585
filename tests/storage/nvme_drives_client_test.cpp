// Drives as the management interface reports them: what each row becomes, and what every failure answers.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_storage.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;

namespace {

constexpr int kFailure = 77;
constexpr char kSensors[] = "query SensorSlotMap [SlotNo,HealthStatusId] where HardwareTypeId IN (2,21,22)";

// A row of NVMeDrives.
struct Drive {
  int location = 2;
  int slot = 4;
  int ctrl_slot = 0;
  int warning = 0;
  scripted::Cell capacity = int64_t{1'920'383'410'176};
  scripted::Cell form_factor = int64_t{0};

  Row row() const {
    Row cells(location, slot, ctrl_slot, 6, "model", "maker", "serial", "part", "fru", "1.0", 3, warning, 41,
              97);
    cells.push_back(capacity);
    cells.push_back(form_factor);
    return cells;
  }
};

class NvmeDrives : public scripted::ClientTest {
 protected:
  ~NvmeDrives() override { std::free(list_.disks); }

  int list() {
    std::free(list_.disks);
    list_ = {5, nullptr};
    return zymdb_get_nvme_disk_list_from_mi_filter(&list_, "Location=2");
  }
  const _ZYMDB_AimDisk& only(const Drive& drive, const std::vector<Row>& sensors = {}) {
    answer(sensors);
    answer({drive.row()});
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    if (list_.count == 1) return list_.disks[0];
    ADD_FAILURE() << list_.count << " drives";
    static const _ZYMDB_AimDisk none{};
    return none;
  }
  void expect_empty() const {
    EXPECT_EQ(list_.count, 0u);
    EXPECT_EQ(list_.disks, nullptr);
  }

  _ZYMDB_AimDisk_List list_{};
};

TEST_F(NvmeDrives, EveryColumnFillsItsField) {
  const _ZYMDB_AimDisk& drive = only({.location = 2, .slot = 300, .ctrl_slot = 7, .warning = 2});
  EXPECT_EQ(drive.LocationId, 2);
  EXPECT_EQ(drive.BayNo, 300);
  EXPECT_EQ(drive.SlotNo, 7);
  EXPECT_EQ(drive.CtrlType, 6);
  EXPECT_STREQ(drive.Model, "model");
  EXPECT_STREQ(drive.Manufacture, "maker");
  EXPECT_STREQ(drive.SerialNo, "serial");
  EXPECT_STREQ(drive.PartNo, "part");
  EXPECT_STREQ(drive.FruNo, "fru");
  EXPECT_STREQ(drive.FwVersion, "1.0");
  EXPECT_EQ(drive.SFlags, 3);
  EXPECT_EQ(drive.Warning, 2);
  EXPECT_EQ(drive.Temperature, 41);
  EXPECT_EQ(drive.RemainLife, 97);
  EXPECT_STREQ(drive.Capacity, "1.92TB");
  EXPECT_EQ(drive.Presence, 1);
  EXPECT_EQ(drive.InfoMask, 0x0F);
  EXPECT_STREQ(drive.MediaType, "SSD");
  EXPECT_EQ(drive.PCIFuncKey, 0u);
  EXPECT_STREQ(drive.UUID, "");
  EXPECT_THAT(client().statements,
              ElementsAre(kSensors,
                          "query NVMeDrives [Location,SlotNo,CtrlSlot,CtrlType,ModelName,Manufacturer,"
                          "SupplierSN,PartNo,FruNo,FwVer,SFlags,Warning,Temperature,RemainLife,"
                          "Capacity,FormFactor] where Location=2"));
  EXPECT_THAT(client().calls, testing::IsSupersetOf({"text 4 size 65", "text 5 size 17", "text 6 size 33",
                                                     "text 7 size 33", "text 8 size 33", "text 9 size 17"}));
}

TEST_F(NvmeDrives, UnreadableColumnsTakeTheirDefaults) {
  answer(std::vector<Row>{});
  Row row;
  for (int i = 0; i < 16; ++i) row.push_back(nullptr);
  answer({row});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  const _ZYMDB_AimDisk& drive = list_.disks[0];
  EXPECT_EQ(drive.LocationId | drive.BayNo | drive.SlotNo | drive.CtrlType | drive.SFlags | drive.Warning |
                drive.Temperature | drive.RemainLife,
            0);
  EXPECT_STREQ(drive.Model, "");
  EXPECT_STREQ(drive.Capacity, "0GB");
  EXPECT_EQ(drive.FormFactor, 0u);
  EXPECT_STREQ(drive.Location, "Slot 0");
  EXPECT_EQ(drive.DriveTypeId, 3);
  EXPECT_EQ(drive.HealthStatusId, 2);
}

TEST_F(NvmeDrives, ThePlaceTellsTheTypeAndTheSensor) {
  struct Case {
    int kind;
    const char* location;
    int drive_type;
    const char* display_type;
    int sensor;
    bool has_controller;
  };
  const Case cases[] = {
      {1, "Slot 1", 3, "NVMe", 65535, false},    {2, "Bay 1", 3, "NVMe", 1, false},
      {3, "M.2 Bay1", 5, "M.2 NVMe", 129, true}, {4, "7MM Bay1", 7, "7MM NVMe", 193, true},
      {0, "Slot 1", 3, "NVMe", 65535, false},    {5, "Slot 1", 3, "NVMe", 65535, false},
  };
  for (const Case& each : cases) {
    answer({Row(each.sensor, 7), Row(each.sensor == 2 ? 3 : 2, 8)});
    answer({Drive{.location = each.kind, .slot = 1}.row()});
    if (each.has_controller) answer(std::vector<Row>{});
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.count, 1u);
    EXPECT_STREQ(list_.disks[0].Location, each.location);
    EXPECT_EQ(list_.disks[0].DriveTypeId, each.drive_type);
    EXPECT_STREQ(list_.disks[0].DisplayType, each.display_type);
    EXPECT_EQ(list_.disks[0].HealthStatusId, 7) << each.kind;
    EXPECT_TRUE(client().answers.empty());
  }
}

TEST_F(NvmeDrives, ControllersAreCollectedOnceAndOnlyForM2And7mmDrives) {
  answer(std::vector<Row>{});
  answer({Drive{.location = 2, .ctrl_slot = 12}.row(), Drive{.location = 3, .ctrl_slot = 12}.row(),
          Drive{.location = 4, .ctrl_slot = 13}.row(), Drive{.location = 4, .ctrl_slot = 12 + 256}.row()});
  answer({Row(11, 100), Row(12, 200), Row(12, 300)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 4u);
  EXPECT_EQ(list_.disks[0].PCIFuncKey, 0u);
  EXPECT_EQ(list_.disks[0].CtrlType, 6);
  EXPECT_EQ(list_.disks[1].PCIFuncKey, 200u);
  EXPECT_EQ(list_.disks[1].CtrlType, 3);
  EXPECT_EQ(list_.disks[2].PCIFuncKey, 0u);
  EXPECT_EQ(list_.disks[2].CtrlType, 6);
  EXPECT_EQ(list_.disks[3].PCIFuncKey, 0u);
  EXPECT_EQ(client().statements.size(), 3u);
}

TEST_F(NvmeDrives, ControllersThatCannotBeCollectedAreNone) {
  for (const Answer& each : {Answer::failing(kFailure), Answer{.rows = {Row(12, 200)}, .end = kFailure}}) {
    answer(std::vector<Row>{});
    answer({Drive{.location = 3, .ctrl_slot = 12}.row(), Drive{.location = 3, .ctrl_slot = 12}.row()});
    answer(each);
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(list_.disks[1].PCIFuncKey, 0u);
    EXPECT_TRUE(client().answers.empty());
  }
}

TEST_F(NvmeDrives, OfSeveralSensorsTheLastCounts) {
  EXPECT_EQ(only({}, {Row(4, 1), Row(4, 3), Row(5, 9)}).HealthStatusId, 3);
  EXPECT_EQ(only({}, {Row(4, nullptr)}).HealthStatusId, 2);
  EXPECT_EQ(only({.location = 1}, {Row(nullptr, 5)}).HealthStatusId, 5);
  EXPECT_EQ(only({}, {Row(5, 9)}).HealthStatusId, 2);
}

TEST_F(NvmeDrives, SensorsThatCannotBeReadAreNone) {
  for (const Answer& each : {Answer::failing(kFailure), Answer::without_result()}) {
    answer(each);
    answer({Drive{}.row()});
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(list_.disks[0].HealthStatusId, 2);
  }
}

TEST_F(NvmeDrives, InASlotAWarningIsAHealthOfItsOwn) {
  const std::vector<Row> sensors = {Row(65535, 2), Row(4, 2)};
  EXPECT_EQ(only({.location = 1, .warning = 4}, sensors).HealthStatusId, 1);
  EXPECT_EQ(only({.location = 1, .warning = 0}, sensors).HealthStatusId, 2);
  EXPECT_EQ(only({.location = 2, .warning = 4}, sensors).HealthStatusId, 2);
  EXPECT_EQ(only({.location = 5, .warning = 4}, sensors).HealthStatusId, 2);
  EXPECT_EQ(only({.location = 1, .warning = 4}, {Row(65535, 3)}).HealthStatusId, 3);
}

TEST_F(NvmeDrives, CapacitiesAreInTerabytesFromOneTerabyteOn) {
  const std::pair<int64_t, const char*> cases[] = {
      {0, "0GB"},
      {480'103'981'056, "480GB"},
      {999'999'999'999, "1000GB"},
      {1'000'000'000'000, "1.00TB"},
      {7'681'501'126'656, "7.68TB"},
  };
  for (const auto& [bytes, text] : cases) EXPECT_STREQ(only({.capacity = bytes}).Capacity, text);
}

TEST_F(NvmeDrives, FormFactorCodesHaveClasses) {
  const std::pair<int, unsigned> borders[] = {
      {0x0F, 0}, {0x10, 0x10}, {0x14, 0x10}, {0x15, 0}, {0x1F, 0}, {0x20, 0x20}, {0x23, 0x20}, {0x24, 0},
      {0x2F, 0}, {0x30, 0x30}, {0x35, 0x30}, {0x36, 0}, {0x4F, 0}, {0x50, 0x50}, {0x58, 0x50}, {0x59, 0},
  };
  for (const auto& [code, form_factor] : borders) {
    const _ZYMDB_AimDisk& drive = only({.form_factor = int64_t{code}});
    EXPECT_EQ(drive.FormFactor, form_factor) << code;
    EXPECT_STREQ(drive.DisplayType, form_factor == 0x50 ? "EDSFF NVMe" : "NVMe");
  }
}

TEST_F(NvmeDrives, AnEdsffDriveIn7mmBayStaysA7mmDrive) {
  answer(std::vector<Row>{});
  answer({Drive{.location = 4, .form_factor = int64_t{0x55}}.row()});
  answer(std::vector<Row>{});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(list_.disks[0].DisplayType, "EDSFF NVMe");
  EXPECT_EQ(list_.disks[0].DriveTypeId, 7);
}

TEST_F(NvmeDrives, FailuresLeaveTheListEmpty) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), ZYM_DB_STATUS_NO_DB},
      {Answer::failing(kFailure, true), ZYM_DB_STATUS_NO_DB},
      {Answer::without_result(), ZYM_DB_STATUS_NO_DB},
      {Answer{}, ZYM_DB_STATUS_OK},
      {Answer{.rows = {Drive{}.row()}, .end = kFailure, .row_count = 2}, kFailure},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
  };
  for (const auto& [each, status] : cases) {
    answer(std::vector<Row>{});
    answer(each);
    EXPECT_EQ(list(), status);
    expect_empty();
  }
}

TEST_F(NvmeDrives, NoMoreRowsAreReadThanWereCounted) {
  answer(std::vector<Row>{});
  answer(Answer{.rows = {Drive{.slot = 1}.row(), Drive{.slot = 2}.row()}, .row_count = 1});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1u);
}

TEST_F(NvmeDrives, TheListIsLookedForBeforeTheDatabase) {
  EXPECT_EQ(zymdb_get_nvme_disk_list_from_mi_filter(nullptr, "1"), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_nvme_disk_list_from_mi_filter(nullptr, "1"), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_nvme_disk_list_from_mi_filter(&list_, "1"), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
