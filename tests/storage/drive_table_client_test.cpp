// Drives of the drive table: what each row becomes, and what every failure answers.
#include <gmock/gmock.h>
#include <syslog.h>

#include "support/scripted_client.h"
#include "support/system_log.h"
#include "zymdb_storage.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;

namespace {

constexpr int kFailure = 77;
constexpr char kSensors[] = "query SensorSlotMap [SlotNo,HealthStatusId] where HardwareTypeId IN (2,21,22)";
constexpr char kDrives[] =
    "query AimDisks "
    "[PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,DriveTypeId,MediaTypeId,FruNo,PartNo,"
    "SerialNo,Model,UUID,Manufacture,FwVersion,Capacity,SFlags,Warning,Temperature,RemainLife,InfoMask] "
    "where "
    "Presence=1";
constexpr char kControllers[] = "query PCIs [SlotNo,FunKey] where VendorId=6987 AND SubVendorId=";
constexpr char kBays[] = "query propertiesDCTbl [propName,propValue] where propName like \"%hdd%type\"";

// A row of AimDisks.
struct Drive {
  int kind = 2;
  int bay = 4;
  scripted::Cell type = "3";
  scripted::Cell media = "1";
  int slot = 0;

  Row row() const {
    Row cells(100, slot, 6, bay, kind, "place");
    cells.push_back(type);
    cells.push_back(media);
    for (const char* text : {"fru", "part", "serial", "model", "uuid", "maker", "1.0", "960GB"})
      cells.push_back(text);
    for (const int number : {1, 2, 41, 97, 0x10F}) cells.push_back(int64_t{number});
    return cells;
  }
};

Row bay(int number, int type) {
  return Row("/dc/votc/dm/drive/hdd/" + std::to_string(number) + "/type",
             std::string{'\4', static_cast<char>(type)});
}

class DriveTable : public scripted::ClientTest {
 protected:
  DriveTable() { system_log().clear(); }
  ~DriveTable() override { std::free(list_.disks); }

  int list() {
    std::free(list_.disks);
    list_ = {5, nullptr};
    return zymdb_get_disk_list_with_filter(&list_, "Presence=1");
  }
  // The one drive; `more` answers what is asked on its behalf.
  const _ZYMDB_AimDisk& only(const Drive& drive, const std::vector<Row>& sensors = {},
                             const std::vector<std::vector<Row>>& more = {}) {
    answer(sensors);
    answer({drive.row()});
    for (const std::vector<Row>& rows : more) answer(rows);
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    EXPECT_TRUE(client().answers.empty());
    if (list_.count == 1) return list_.disks[0];
    ADD_FAILURE() << list_.count << " drives";
    static const _ZYMDB_AimDisk none{};
    return none;
  }

  _ZYMDB_AimDisk_List list_{};
};

TEST_F(DriveTable, EveryColumnFillsItsField) {
  const _ZYMDB_AimDisk& drive = only({.kind = 1, .type = "1", .slot = 7});
  EXPECT_EQ(drive.PCIFuncKey, 100u);
  EXPECT_EQ(drive.SlotNo, 7);
  EXPECT_EQ(drive.CtrlType, 6);
  EXPECT_EQ(drive.BayNo, 4);
  EXPECT_EQ(drive.LocationId, 1);
  EXPECT_STREQ(drive.Location, "place");
  EXPECT_EQ(drive.DriveTypeId, 1);
  EXPECT_STREQ(drive.FruNo, "fru");
  EXPECT_STREQ(drive.PartNo, "part");
  EXPECT_STREQ(drive.SerialNo, "serial");
  EXPECT_STREQ(drive.Model, "model");
  EXPECT_STREQ(drive.UUID, "uuid");
  EXPECT_STREQ(drive.Manufacture, "maker");
  EXPECT_STREQ(drive.FwVersion, "1.0");
  EXPECT_STREQ(drive.Capacity, "960GB");
  EXPECT_EQ(drive.SFlags, 1);
  EXPECT_EQ(drive.Warning, 2);
  EXPECT_EQ(drive.Temperature, 41);
  EXPECT_EQ(drive.RemainLife, 97);
  EXPECT_EQ(drive.InfoMask, 0x10F);
  EXPECT_EQ(drive.Presence, 0);
  EXPECT_THAT(client().statements, ElementsAre(kSensors, kDrives));
  EXPECT_THAT(client().calls, testing::IsSupersetOf({"text 5 size 17", "text 6 size 16", "text 7 size 16",
                                                     "text 8 size 33", "text 11 size 65", "text 12 size 65",
                                                     "text 13 size 17", "text 15 size 17"}));
}

TEST_F(DriveTable, EachDriveIsLogged) {
  answer(std::vector<Row>{});
  answer({Drive{.kind = 1, .type = "1"}.row(), Drive{.kind = 3, .type = "5", .slot = 12}.row()});
  answer({Row(12, 200)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  // The controller is found after the drive was logged.
  EXPECT_EQ(list_.disks[1].CtrlType, 3);
  EXPECT_THAT(
      system_log(),
      ElementsAre("14: zymdb_get_disk_list_with_filter aimDiskInfo[0].ctrlType = 6, "
                  "aimDiskInfo[row].locationId = 1, aimDiskInfo[row].location = place, driveTypeId = 1\n",
                  "14: zymdb_get_disk_list_with_filter aimDiskInfo[1].ctrlType = 6, "
                  "aimDiskInfo[row].locationId = 3, aimDiskInfo[row].location = place, driveTypeId = 5\n"));
}

TEST_F(DriveTable, NoDriveIsLoggedWhereTheProcessLetsNoInformationThrough) {
  const int mask = setlogmask(LOG_UPTO(LOG_NOTICE));
  answer(std::vector<Row>{});
  answer({Drive{.kind = 1, .type = "1"}.row()});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  setlogmask(mask);
  EXPECT_EQ(list_.count, 1U);
  EXPECT_THAT(system_log(), testing::IsEmpty());
}

TEST_F(DriveTable, ADriveCannotForgeALineOfTheSystemLog) {
  Row row = Drive{.kind = 1, .type = "1"}.row();
  row[5] = "Slot\n1\r\x1B[2J\x7F";
  answer(std::vector<Row>{});
  answer({row});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(system_log(),
              ElementsAre("14: zymdb_get_disk_list_with_filter aimDiskInfo[0].ctrlType = 6, "
                          "aimDiskInfo[row].locationId = 1, aimDiskInfo[row].location = Slot 1  [2J , "
                          "driveTypeId = 1\n"));
}

TEST_F(DriveTable, UnreadableColumnsTakeTheirDefaults) {
  answer(std::vector<Row>{});
  Row row;
  for (int i = 0; i < 21; ++i) row.push_back(nullptr);
  answer({row});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  const _ZYMDB_AimDisk& drive = list_.disks[0];
  EXPECT_EQ(drive.BayNo, 255);
  EXPECT_EQ(drive.PCIFuncKey, 0u);
  EXPECT_EQ(drive.SlotNo | drive.CtrlType | drive.LocationId | drive.DriveTypeId | drive.SFlags |
                drive.InfoMask | drive.MediaValue,
            0);
  EXPECT_STREQ(drive.DisplayType, "Unknown");
  EXPECT_STREQ(drive.MediaType, "HDD");
}

TEST_F(DriveTable, OfTheBayTheLowEightBitsCount) {
  EXPECT_EQ(only({.bay = 300, .type = "1"}).BayNo, 44);
  EXPECT_EQ(only({.bay = 300, .type = "1"}, {Row(44, 9)}).HealthStatusId, 9);
}

TEST_F(DriveTable, DriveTypesHaveNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"1", "SATA"},     {"2", "SAS"},      {"4", "M.2 SATA"}, {"5", "M.2 NVMe"},
      {"6", "7MM SATA"}, {"7", "7MM NVMe"}, {"0", "Unknown"},  {"8", "Unknown"},
      {"9", "Unknown"},  {"x", "Unknown"},  {"-1", "Unknown"}, {"010", "Unknown"},
  };
  for (const auto& [type, name] : cases) {
    const bool has_controller = std::string("4567").find(type) != std::string::npos;
    const std::vector<std::vector<Row>> more(has_controller ? 1 : 0);
    EXPECT_STREQ(only({.kind = 1, .type = type}, {}, more).DisplayType, name) << type;
  }
  EXPECT_STREQ(only({.kind = 1, .type = "3"}).DisplayType, "NVMe");
}

TEST_F(DriveTable, MediaAreSolidOrTurn) {
  const std::tuple<const char*, const char*, int> cases[] = {
      {"1", "SSD", 0},         {"7200", "HDD", 7200}, {"2", "HDD", 2},
      {"65534", "HDD", 65534}, {"65535", "HDD", 0},   {"0", "HDD", 0},
      {"", "HDD", 0},          {"-5", "HDD", 0},      {"99999999999999999999", "HDD", 0},
  };
  for (const auto& [media, name, value] : cases) {
    const _ZYMDB_AimDisk& drive = only({.kind = 1, .type = "1", .media = media});
    EXPECT_STREQ(drive.MediaType, name) << media;
    EXPECT_EQ(drive.MediaValue, value) << media;
  }
}

TEST_F(DriveTable, ThePlaceTellsTheFormFactorAndTheSensor) {
  const std::tuple<int, const char*, unsigned, int> cases[] = {
      {1, "1", 0x20, 65535}, {1, "3", 0x20, 65535}, {1, "5", 0x30, 65535}, {1, "7", 0x10, 65535},
      {2, "1", 0x10, 4},     {3, "5", 0x30, 132},   {3, "1", 0x30, 132},   {4, "7", 0x10, 196},
      {0, "1", 0, 65535},    {5, "1", 0, 65535},
  };
  for (const auto& [kind, type, form_factor, sensor] : cases) {
    const bool has_controller = *type == '5' || *type == '7';
    const _ZYMDB_AimDisk& drive = only({.kind = kind, .type = type}, {Row(sensor, 9), Row(5, 8)},
                                       std::vector<std::vector<Row>>(has_controller ? 1 : 0));
    EXPECT_EQ(drive.FormFactor, form_factor) << kind << " " << type;
    EXPECT_EQ(drive.HealthStatusId, 9) << kind << " " << type;
  }
}

TEST_F(DriveTable, AWarningIsNoHealthHere) {
  EXPECT_EQ(only({.kind = 1, .type = "3"}).HealthStatusId, 2);
}

TEST_F(DriveTable, M2And7mmDrivesTakeTheirControllersKey) {
  answer(std::vector<Row>{});
  std::vector<Row> rows;
  for (const char* type : {"1", "4", "5", "6", "7", "8"})
    rows.push_back(Drive{.kind = 3, .type = type, .slot = 12}.row());
  rows.push_back(Drive{.kind = 3, .type = "5", .slot = 13}.row());
  answer(rows);
  answer({Row(11, 7), Row(12, 200), Row(12, 300)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  std::vector<unsigned> keys;
  std::vector<int> types;
  for (uint32_t i = 0; i < list_.count; ++i) {
    keys.push_back(list_.disks[i].PCIFuncKey);
    types.push_back(list_.disks[i].CtrlType);
  }
  EXPECT_THAT(keys, ElementsAre(100, 200, 200, 200, 200, 100, 100));
  EXPECT_THAT(types, ElementsAre(6, 3, 3, 3, 3, 6, 6));
  EXPECT_EQ(client().statements.size(), 3u);
  EXPECT_THAT(client().statements.back(), testing::StartsWith(kControllers));
}

TEST_F(DriveTable, NvmeDrivesInEdsffBaysAreEdsffDrives) {
  answer(std::vector<Row>{});
  answer({Drive{.kind = 1, .bay = 4}.row(), Drive{.bay = 4, .type = "1"}.row(), Drive{.bay = 4}.row(),
          Drive{.bay = 5}.row(), Drive{.bay = 4 + 256}.row()});
  // The indices are the numbers less 1.
  answer({bay(5, 8), bay(6, 3), bay(9, 8)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  std::vector<std::string> names;
  for (uint32_t i = 0; i < list_.count; ++i)
    names.push_back(std::string(list_.disks[i].DisplayType) + "/" +
                    std::to_string(list_.disks[i].FormFactor));
  EXPECT_THAT(names, ElementsAre("NVMe/32", "SATA/16", "EDSFF NVMe/80", "NVMe/16", "EDSFF NVMe/80"));
  EXPECT_THAT(client().statements, ElementsAre(kSensors, kDrives, kBays));
}

TEST_F(DriveTable, ABaysNumberStandsInItsPropertysPath) {
  const std::tuple<std::string, int, bool> cases[] = {
      {"/dc/votc/dm/drive/hdd/5/type", 4, true},    {"/dc/votc/dm/drive/hdd/5/type", 5, false},
      {"/dc/votc/dm/drive/hdd/64/type", 63, true},  {"/dc/votc/dm/drive/hdd/65/type", 64, false},
      {"/dc/votc/dm/drive/hdd/123/type", 11, true},  // two digits are read
      {"/dc/votc/dm/drive/hdd/0/type", 255, false}, {"/dc/votc/dm/drive/hdd/x/type", 255, false},
      {"/dc/votc/dm/drive/hdd", 255, false},        {"", 255, false},
      {"/dc/votc/dm/drive/hdd/1", 0, true},
  };
  for (const auto& [name, number, is_edsff] : cases) {
    const _ZYMDB_AimDisk& drive = only({.bay = number}, {}, {{Row(name, std::string("\4\10"))}});
    EXPECT_EQ(drive.FormFactor == 0x50, is_edsff) << name;
  }
  EXPECT_THAT(client().calls, testing::Contains("text 0 size 128"));
}

TEST_F(DriveTable, BaysThatCannotBeReadAreNone) {
  for (const Answer& each :
       {Answer::failing(kFailure), Answer::without_result(), Answer{.rows = {bay(5, 8)}, .end = kFailure}}) {
    answer(std::vector<Row>{});
    answer({Drive{.bay = 4}.row()});
    answer(each);
    EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
    EXPECT_STREQ(list_.disks[0].DisplayType, "NVMe");
  }
  client().has_properties = false;
  EXPECT_STREQ(only({.bay = 4}).DisplayType, "NVMe");
}

TEST_F(DriveTable, NoMoreThan64BaysAreKept) {
  std::vector<Row> rows(64, bay(1, 8));
  rows.push_back(bay(5, 8));
  EXPECT_STREQ(only({.bay = 4}, {}, {rows}).DisplayType, "NVMe");
}

TEST_F(DriveTable, FailuresLeaveTheListEmpty) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{}, ZYM_DB_STATUS_OK},
      {Answer{.rows = {Drive{.kind = 1}.row()}, .end = kFailure, .row_count = 2}, kFailure},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
  };
  for (const auto& [each, status] : cases) {
    answer(std::vector<Row>{});
    answer(each);
    EXPECT_EQ(list(), status);
    EXPECT_EQ(list_.count, 0u);
    EXPECT_EQ(list_.disks, nullptr);
  }
}

TEST_F(DriveTable, NoMoreRowsAreReadThanWereCounted) {
  answer(std::vector<Row>{});
  answer(Answer{.rows = {Drive{.kind = 1}.row(), Drive{.kind = 1}.row()}, .row_count = 1});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1u);
}

TEST_F(DriveTable, TheDatabaseIsLookedForBeforeTheList) {
  EXPECT_EQ(zymdb_get_disk_list_with_filter(nullptr, "1"), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_disk_list_with_filter(nullptr, "1"), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_disk_list_with_filter(&list_, "1"), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
