// Records of drives: exact filters and value sets, and what every failure of the client answers.
#include <gmock/gmock.h>

#include <cstring>

#include "support/scripted_client.h"
#include "zymdb_storage.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr int kFailure = 77;
constexpr char kLookUp[] =
    "query AimDisks [CtrlType,SerialNo,FwVersion] where Location=\"Bay 2\" AND DriveTypeId=3";

class DriveRecords : public scripted::ClientTest {
 protected:
  DriveRecords() {
    drive_.PCIFuncKey = 0x12345678;
    drive_.SlotNo = 300;
    drive_.CtrlType = 7;
    drive_.BayNo = 2;
    drive_.LocationId = 2;
    drive_.DriveTypeId = 3;
    std::strcpy(drive_.FruNo, "fru");
    std::strcpy(drive_.PartNo, "part");
    std::strcpy(drive_.SerialNo, "SN1");
    std::strcpy(drive_.Model, "model");
    std::strcpy(drive_.UUID, "uuid");
    std::strcpy(drive_.Manufacture, "maker");
    std::strcpy(drive_.FwVersion, "1.0");
    std::strcpy(drive_.Capacity, "1.92TB");
    drive_.SFlags = 1;
    drive_.Warning = 2;
    drive_.Temperature = 40;
    drive_.RemainLife = 99;
    drive_.InfoMask = 0x10F;
  }

  std::string added() {
    EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), ZYM_DB_STATUS_OK);
    return client().statements.back();
  }

  _ZYMDB_AimDisk drive_{};
};

// All columns of the drive, with or without the controller type.
std::string all_columns(const std::string& ctrl_type) {
  return "{PCIFuncKey=uint:305419896, SlotNo=short_uint:300, " + ctrl_type +
         "BayNo=short_uint:2, LocationId=uchar:2, Location=text:Bay 2, Presence=uchar:1, DriveTypeId=text:3, "
         "MediaTypeId=text:1, FruNo=text:fru, PartNo=text:part, SerialNo=text:SN1, Model=text:model, "
         "UUID=text:uuid, Manufacture=text:maker, FwVersion=text:1.0, Capacity=text:1.92TB, SFlags=uchar:1, "
         "Warning=uchar:2, Temperature=uchar:40, RemainLife=uchar:99, InfoMask=short_uint:271}";
}

TEST_F(DriveRecords, ANewDriveIsInsertedWhole) {
  answer(std::vector<Row>{});
  EXPECT_EQ(added(), "insert AimDisks " + all_columns("CtrlType=uchar:7, "));
  EXPECT_EQ(client().statements.front(), kLookUp);
  EXPECT_THAT(client().calls, testing::IsSupersetOf({"get_content_values", "clear"}));
}

TEST_F(DriveRecords, ADriveThatCannotBeLookedUpIsInserted) {
  for (const Answer& each : {Answer::failing(kFailure), Answer::failing(kFailure, true),
                             Answer::without_result(), Answer{.end = kFailure}}) {
    answer(each);
    EXPECT_EQ(added(), "insert AimDisks " + all_columns("CtrlType=uchar:7, "));
  }
}

TEST_F(DriveRecords, AnotherDriveInTheBayReplacesTheRecord) {
  answer({Row(4, "SN2", "9")});
  EXPECT_EQ(added(), "update AimDisks " + all_columns("") + " where Location=\"Bay 2\" AND DriveTypeId=3");
}

TEST_F(DriveRecords, AKnownControllerTypeStays) {
  const std::tuple<Row, int, const char*> cases[] = {
      {Row(4, "SN2", ""), 0, ""},
      {Row(4, "SN2", ""), 7, ""},
      {Row(0, "SN2", ""), 7, "CtrlType=uchar:7, "},
      {Row(0, "SN2", ""), 0, ""},
      {Row(nullptr, "SN2", ""), 7, "CtrlType=uchar:7, "},
  };
  for (const auto& [stored, type, written] : cases) {
    drive_.CtrlType = static_cast<uint8_t>(type);
    answer({stored});
    EXPECT_THAT(added(), HasSubstr(all_columns(written)));
  }
}

TEST_F(DriveRecords, ANewDrivesControllerTypeIsWrittenEvenWhenUnknown) {
  drive_.CtrlType = 0;
  answer(std::vector<Row>{});
  EXPECT_THAT(added(), HasSubstr("CtrlType=uchar:0"));
}

TEST_F(DriveRecords, TheSameDriveGetsOnlyANewFirmwareVersion) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"1.0", "1.0", "{}"},
      {"1.0", "", "{}"},
      {"1.0", "2.0", "{FwVersion=text:2.0}"},
      {"", "2.0", "{FwVersion=text:2.0}"},
  };
  for (const auto& [stored, reported, written] : cases) {
    std::strcpy(drive_.FwVersion, reported);
    answer({Row(0, "SN1", stored)});
    EXPECT_EQ(added(),
              std::string("update AimDisks ") + written + " where Location=\"Bay 2\" AND DriveTypeId=3");
  }
}

TEST_F(DriveRecords, AnUnreadableSerialNumberIsAnEmptyOne) {
  answer({Row(0, nullptr, nullptr)});
  EXPECT_THAT(added(), HasSubstr("SerialNo=text:SN1"));
  drive_.SerialNo[0] = '\0';
  answer({Row(0, nullptr, nullptr)});
  EXPECT_THAT(added(), HasSubstr("{FwVersion=text:1.0}"));
  EXPECT_THAT(client().calls, testing::IsSupersetOf({"text 1 size 33", "text 2 size 17"}));
}

TEST_F(DriveRecords, EmptyTextsAreWrittenAsTheyAre) {
  drive_.UUID[0] = '\0';
  answer(std::vector<Row>{});
  EXPECT_THAT(added(), HasSubstr("UUID=text:, "));
}

TEST_F(DriveRecords, ADriveInASlotIsKeyedByItsSlot) {
  drive_.LocationId = 1;
  drive_.BayNo = 65535;
  answer(std::vector<Row>{});
  EXPECT_THAT(added(), HasSubstr("Location=text:Slot 65535"));
  EXPECT_THAT(client().statements.front(), EndsWith("where Location=\"Slot 65535\" AND DriveTypeId=3"));
}

TEST_F(DriveRecords, OnlyDrivesInSlotsAndBaysAreAdded) {
  for (const int kind : {0, 3, 4, 5, 255}) {
    drive_.LocationId = static_cast<uint8_t>(kind);
    EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), ZYM_DB_STATUS_INVALID_PARAM);
  }
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(DriveRecords, AddingAnswersTheFirstFailure) {
  client().has_values = false;
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), ZYM_DB_STATUS_NO_MEMORY);
  client().has_values = true;
  client().failures[{"insert", 0}] = kFailure;
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), kFailure);
  client().failures[{"update", 0}] = 78;
  answer({Row(0, "", "")});
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), 78);
}

TEST_F(DriveRecords, ADriveIsNotWrittenInPart) {
  const int puts = 21;
  for (int put = 0; put < puts; ++put) {
    client().failures[{"put", put * puts + put}] = kFailure;
    answer(std::vector<Row>{});
    EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&drive_), kFailure) << put;
    EXPECT_EQ(client().statements.back(), kLookUp);
  }
}

TEST_F(DriveRecords, ChecksStandInTheirOrder) {
  const auto add = zymdb_add_update_nvme_aim_disk;
  drive_.LocationId = 5;
  EXPECT_EQ(add(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_values = false;
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(&drive_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&drive_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(&drive_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(zymdb_update_aim_disk_presence(2, 2, 1), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(2, 2, "1"), ZYM_DB_STATUS_NO_MEMORY);
  client().has_database = false;
  EXPECT_EQ(add(&drive_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(add(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(&drive_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&drive_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(&drive_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_update_aim_disk_presence(9, 9, 9), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(9, 9, "1"), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(3, 9), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(1, 9), ZYM_DB_STATUS_NO_DB);
  unsigned key = 5;
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(1, 1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(1, 1, &key), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(key, 5u);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(DriveRecords, SmartValuesAreWrittenWhereOneOfThemChanged) {
  drive_.LocationId = 3;
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(&drive_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("update AimDisks {SFlags=uchar:1, Warning=uchar:2, Temperature=uchar:40, "
                          "RemainLife=uchar:99, InfoMask=short_uint:271} where Location=\"M.2 Bay2\" AND "
                          "(SFlags!=1 OR Warning!=2 OR RemainLife!=99 OR InfoMask!=271 OR "
                          "((Temperature+3)<40) OR ((Temperature-3)>40))"));
}

TEST_F(DriveRecords, ThePlaceIsNamedAsTheTableNamesIt) {
  const std::pair<int, const char*> cases[] = {{1, "Slot 2"}, {2, "Bay 2"}, {3, "M.2 Bay2"}, {4, "7MM Bay2"}};
  for (const auto& [kind, text] : cases) {
    drive_.LocationId = static_cast<uint8_t>(kind);
    EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&drive_), ZYM_DB_STATUS_OK);
    EXPECT_EQ(
        client().statements.back(),
        std::string("update AimDisks {CtrlType=uchar:7} where Location=\"") + text + "\" AND CtrlType!=7");
  }
}

TEST_F(DriveRecords, SmartValuesAndControllerTypesNeedAKnownPlace) {
  for (const int kind : {0, 5, 255}) {
    drive_.LocationId = static_cast<uint8_t>(kind);
    EXPECT_EQ(zymdb_update_aim_disk_smart_info(&drive_), ZYM_DB_STATUS_INVALID_PARAM);
    EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&drive_), ZYM_DB_STATUS_INVALID_PARAM);
  }
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(DriveRecords, PresenceIsWrittenWhereItChanged) {
  EXPECT_EQ(zymdb_update_aim_disk_presence(4, 300, 65537), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("update AimDisks {Presence=short_uint:1} where LocationId=4 AND BayNo=300 AND "
                          "Presence!=65537"));
}

TEST_F(DriveRecords, IdentityDataAreWrittenEveryTime) {
  drive_.LocationId = 9;
  drive_.UUID[0] = drive_.PartNo[0] = '\0';
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(&drive_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre("update AimDisks {Model=text:model, SerialNo=text:SN1, PartNo=text:, FruNo=text:fru, "
                  "Manufacture=text:maker, FwVersion=text:1.0} where LocationId=9 AND BayNo=2"));
}

TEST_F(DriveRecords, FirmwareVersionsGoToTheManagementInterfacesTable) {
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(3, 1, "2.1"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("update NVMeDrives {FwVer=text:2.1} where Location=3 AND SlotNo=1"));
}

TEST_F(DriveRecords, UpdatesAnswerTheClientsStatus) {
  for (int call = 0; call < 5; ++call) client().failures[{"update", call}] = kFailure;
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(&drive_), kFailure);
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&drive_), kFailure);
  EXPECT_EQ(zymdb_update_aim_disk_vpd_info(&drive_), kFailure);
  EXPECT_EQ(zymdb_update_aim_disk_presence(2, 2, 1), kFailure);
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(2, 2, "1"), kFailure);
}

TEST_F(DriveRecords, AnNvmeDriveExistsWhenItsRowDoes) {
  answer({Row(12)});
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(2, 4), 1);
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(1, 4), 0);
  EXPECT_THAT(client().statements,
              ElementsAre("query AimDisks [_id] where Location=\"Bay 4\" AND DriveTypeId=3",
                          "query AimDisks [_id] where Location=\"Slot 4\" AND DriveTypeId=3"));
  for (const Answer& each : {Answer::failing(kFailure), Answer::without_result(), Answer{.end = kFailure}}) {
    answer(each);
    EXPECT_EQ(zymdb_nvme_aim_disk_exist(2, 4), 0);
  }
  for (const int kind : {0, 3, 4, -1})
    EXPECT_EQ(zymdb_nvme_aim_disk_exist(kind, 4), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(DriveRecords, TheFunctionKeyIsPutTogetherFromTheAddress) {
  unsigned key = 5;
  answer({Row(1, 2, 3, 4), Row(9, 9, 9, 9)});
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(2, 11, &key), ZYM_DB_STATUS_OK);
  EXPECT_EQ(key, 0x01020304u);
  answer({Row(nullptr, 2, nullptr, 4)});
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(2, 11, &key), ZYM_DB_STATUS_OK);
  EXPECT_EQ(key, 0x00020004u);
  EXPECT_EQ(client().statements.front(),
            "query PCIs [SegNo,BusNo,DeviceNo,FunctionNo] where Location=2 AND SlotNo=11 AND ClsCode=67586");
}

TEST_F(DriveRecords, WithoutAFunctionThereIsNoKey) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, ZYM_DB_STATUS_NO_DB},
      {Answer{.end = kFailure}, ZYM_DB_STATUS_NO_DB},
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
  };
  unsigned key = 5;
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_nvme_drv_funkey(2, 11, &key), status);
    EXPECT_EQ(key, 5u);
  }
}

}  // namespace
