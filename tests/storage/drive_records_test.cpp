// Records of drives on the embedded database, with what is written and what is not.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "support/inventory.h"
#include "zymdb_storage.h"

namespace {

class DriveInventory : public InventoryTest {
 protected:
  static _ZYMDB_AimDisk drive(int kind, int bay) {
    _ZYMDB_AimDisk drive{};
    drive.LocationId = static_cast<uint8_t>(kind);
    drive.BayNo = static_cast<uint16_t>(bay);
    drive.DriveTypeId = 3;
    std::strcpy(drive.SerialNo, "SN1");
    std::strcpy(drive.FwVersion, "1.0");
    drive.Temperature = 40;
    drive.RemainLife = 99;
    drive.InfoMask = 0x0F;
    return drive;
  }
  static std::string smart() {
    return rows("AimDisks", {"Location", "SFlags", "Warning", "Temperature", "RemainLife", "InfoMask"});
  }
  template <class Operation>
  bool writes(Operation operation) {
    const std::string before = written();
    EXPECT_EQ(operation(), ZYM_DB_STATUS_OK);
    return written() != before;
  }
};

TEST_F(DriveInventory, ANewDriveGetsARow) {
  _ZYMDB_AimDisk added = drive(2, 4);
  added.CtrlType = 5;
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(2, 4), 0);
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&added), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("AimDisks", {"Location", "LocationId", "BayNo", "CtrlType", "DriveTypeId", "MediaTypeId",
                              "Presence", "SerialNo", "Temperature", "UUID"}),
            "Bay 4|2|4|5|3|1|1|SN1|40|\n");
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(2, 4), 1);
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(1, 4), 0);
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(3, 4), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(DriveInventory, TheSameDriveIsWrittenOnlyForItsFirmware) {
  _ZYMDB_AimDisk known = drive(2, 4);
  ASSERT_EQ(zymdb_add_update_nvme_aim_disk(&known), ZYM_DB_STATUS_OK);
  std::strcpy(known.Model, "not looked at");
  const auto add = [&] { return zymdb_add_update_nvme_aim_disk(&known); };
  EXPECT_FALSE(writes(add));
  known.FwVersion[0] = '\0';
  EXPECT_FALSE(writes(add));
  std::strcpy(known.FwVersion, "2.0");
  EXPECT_TRUE(writes(add));
  EXPECT_EQ(rows("AimDisks", {"FwVersion", "Model", "SerialNo"}), "2.0||SN1\n");
}

TEST_F(DriveInventory, AnotherDriveInTheBayTakesTheRowAndKeepsTheControllersType) {
  given("AimDisks", {{"Location", "Bay 2"}, {"DriveTypeId", 3}, {"CtrlType", 4}, {"SerialNo", "OLD"}});
  _ZYMDB_AimDisk other = drive(2, 2);
  for (const int type : {0, 7}) {
    other.CtrlType = static_cast<uint8_t>(type);
    std::strcpy(other.SerialNo, type == 0 ? "SN1" : "SN2");
    EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&other), ZYM_DB_STATUS_OK);
    EXPECT_EQ(rows("AimDisks", {"_id", "CtrlType", "SerialNo"}), std::string("1|4|") + other.SerialNo + "\n");
  }
}

TEST_F(DriveInventory, AnUnknownControllersTypeIsFilledIn) {
  given("AimDisks", {{"Location", "Bay 2"}, {"DriveTypeId", 3}, {"CtrlType", 0}, {"SerialNo", "OLD"}});
  _ZYMDB_AimDisk other = drive(2, 2);
  other.CtrlType = 7;
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&other), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("AimDisks", {"CtrlType"}), "7\n");
}

TEST_F(DriveInventory, ATemperatureWithinThreeDegreesWritesNoByte) {
  for (const int kind : {1, 2}) {
    const _ZYMDB_AimDisk added = drive(kind, 4);
    ASSERT_EQ(zymdb_add_update_nvme_aim_disk(&added), ZYM_DB_STATUS_OK);
  }
  _ZYMDB_AimDisk hot = drive(2, 4);
  const auto update = [&] { return zymdb_update_aim_disk_smart_info(&hot); };
  for (const int temperature : {37, 38, 40, 42, 43}) {
    hot.Temperature = static_cast<uint8_t>(temperature);
    EXPECT_FALSE(writes(update)) << temperature;
  }
  EXPECT_EQ(smart(), "Slot 4|0|0|40|99|15\nBay 4|0|0|40|99|15\n");
  hot.Temperature = 44;
  EXPECT_TRUE(writes(update));
  EXPECT_EQ(smart(), "Slot 4|0|0|40|99|15\nBay 4|0|0|44|99|15\n");
  hot.Temperature = 41;
  EXPECT_FALSE(writes(update));
  hot.Temperature = 40;
  EXPECT_TRUE(writes(update));
}

TEST_F(DriveInventory, AnyOtherValueThatChangesWritesAllOfThem) {
  given("AimDisks", {{"Location", "7MM Bay1"},
                     {"SFlags", 0},
                     {"Warning", 0},
                     {"Temperature", 40},
                     {"RemainLife", 99},
                     {"InfoMask", 15}});
  _ZYMDB_AimDisk changed = drive(4, 1);
  changed.Temperature = 42;
  const auto update = [&] { return zymdb_update_aim_disk_smart_info(&changed); };
  EXPECT_FALSE(writes(update));
  changed.SFlags = 1;
  EXPECT_TRUE(writes(update));
  EXPECT_EQ(smart(), "7MM Bay1|1|0|42|99|15\n");
  changed.Warning = 2;
  EXPECT_TRUE(writes(update));
  changed.RemainLife = 98;
  EXPECT_TRUE(writes(update));
  changed.InfoMask = 0x100;
  EXPECT_TRUE(writes(update));
  EXPECT_FALSE(writes(update));
  EXPECT_EQ(smart(), "7MM Bay1|1|2|42|98|256\n");
}

TEST_F(DriveInventory, AControllersTypeThatIsKnownWritesNoByte) {
  given("AimDisks", {{"Location", "M.2 Bay1"}, {"CtrlType", 4}});
  _ZYMDB_AimDisk known = drive(3, 1);
  known.CtrlType = 4;
  const auto update = [&] { return zymdb_update_aim_disk_ctrl_type(&known); };
  EXPECT_FALSE(writes(update));
  known.CtrlType = 5;
  EXPECT_TRUE(writes(update));
  EXPECT_EQ(rows("AimDisks", {"CtrlType"}), "5\n");
  known.LocationId = 5;
  EXPECT_EQ(zymdb_update_aim_disk_ctrl_type(&known), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(DriveInventory, APresenceThatIsKnownWritesNoByte) {
  given("AimDisks", {{"LocationId", 2}, {"BayNo", 4}, {"Presence", 1}});
  EXPECT_FALSE(writes([] { return zymdb_update_aim_disk_presence(2, 4, 1); }));
  EXPECT_TRUE(writes([] { return zymdb_update_aim_disk_presence(2, 4, 0); }));
  EXPECT_FALSE(writes([] { return zymdb_update_aim_disk_presence(2, 5, 1); }));
  EXPECT_EQ(rows("AimDisks", {"Presence"}), "0\n");
}

TEST_F(DriveInventory, IdentityDataAreWrittenToTheirPlaceAlone) {
  given("AimDisks", {{"LocationId", 2}, {"BayNo", 4}});
  given("AimDisks", {{"LocationId", 1}, {"BayNo", 4}});
  _ZYMDB_AimDisk known = drive(2, 4);
  std::strcpy(known.Model, "it's \"quoted\"");
  EXPECT_TRUE(writes([&] { return zymdb_update_aim_disk_vpd_info(&known); }));
  EXPECT_EQ(rows("AimDisks", {"Model", "SerialNo", "PartNo", "FwVersion"}),
            "it's \"quoted\"|SN1||1.0\nNULL|NULL|NULL|NULL\n");
}

TEST_F(DriveInventory, FirmwareVersionsGoToTheReportedDrive) {
  given("NVMeDrives", {{"Location", 3}, {"SlotNo", 1}});
  given("NVMeDrives", {{"Location", 3}, {"SlotNo", 2}});
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(3, 1, "2.1"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_update_nvme_disk_firmware_version(4, 1, "2.2"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("NVMeDrives", {"FwVer"}), "2.1\nNULL\n");
}

TEST_F(DriveInventory, TheFunctionKeyIsThatOfTheSlotsNvmeController) {
  given("PCIs", {{"Location", 2}, {"SlotNo", 4}, {"ClsCode", 0x020000}, {"BusNo", 9}});
  given("PCIs", {{"Location", 2},
                 {"SlotNo", 4},
                 {"ClsCode", 0x010802},
                 {"SegNo", 1},
                 {"BusNo", 2},
                 {"DeviceNo", 3},
                 {"FunctionNo", 4}});
  unsigned key = 0;
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(2, 4, &key), ZYM_DB_STATUS_OK);
  EXPECT_EQ(key, 0x01020304u);
  EXPECT_EQ(zymdb_get_nvme_drv_funkey(1, 4, &key), ZYM_DB_STATUS_NO_DB);
}

TEST_F(DriveInventory, WithoutADatabaseNothingIsWritten) {
  lose_database();
  const _ZYMDB_AimDisk added = drive(2, 4);
  EXPECT_EQ(zymdb_add_update_nvme_aim_disk(&added), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_aim_disk_smart_info(&added), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_nvme_aim_disk_exist(2, 4), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
