// Lists of drives on the embedded databases: a server with a backplane, an add-in card, M.2 and 7 mm drives.
#include <gtest/gtest.h>

#include "support/inventory.h"
#include "zymdb_storage.h"

namespace {

class DriveLists : public InventoryTest {
 protected:
  ~DriveLists() override { std::free(list_.disks); }

  static void given_drive(int kind, int bay, int type, int64_t presence = 1) {
    static const char* const kPlaces[] = {"", "Slot ", "Bay ", "M.2 Bay", "7MM Bay"};
    given("AimDisks", {{"LocationId", kind},
                       {"BayNo", bay},
                       {"DriveTypeId", type},
                       {"Presence", presence},
                       {"CtrlType", 0},
                       {"MediaTypeId", 1},
                       {"Location", kPlaces[kind] + std::to_string(bay)},
                       {"SlotNo", 12}});
  }
  static void given_report(int kind, int bay) {
    given("NVMeDrives", {{"Location", kind},
                         {"SlotNo", bay},
                         {"CtrlType", 0},
                         {"CtrlSlot", 12},
                         {"Capacity", 960},
                         {"FormFactor", 0x10}});
  }
  static void given_marvell(int slot) {
    given("PCIs", {{"VendorId", 0x1B4B},
                   {"SubVendorId", BOARD_SUBSYSTEM_VENDOR_ID},
                   {"DeviceId", 0x9230},
                   {"SlotNo", slot},
                   {"FunKey", 0x00170000}});
  }

  template <class... Arguments, class... Parameters>
  std::string list(int (*operation)(Parameters...), Arguments... arguments) {
    std::free(list_.disks);
    list_ = {};
    EXPECT_EQ(operation(arguments...), ZYM_DB_STATUS_OK);
    return listed();
  }
  std::string listed() const {
    std::string text;
    for (uint32_t i = 0; i < list_.count; ++i) {
      const _ZYMDB_AimDisk& disk = list_.disks[i];
      text += std::string(disk.Location) + "|" + disk.DisplayType + (disk.Presence != 0 ? "|reported" : "") +
              "\n";
    }
    return text;
  }

  _ZYMDB_AimDisk_List list_{};
};

TEST_F(DriveLists, HoldThePresentDrives) {
  given_drive(2, 1, 1);
  given_drive(2, 2, 2, 0);
  given_drive(2, 3, 3);
  EXPECT_EQ(list(zymdb_get_disk_list, &list_), "Bay 1|SATA\nBay 3|NVMe\n");
  EXPECT_EQ(list(zymdb_get_onboard_sata_disk_list, &list_), "Bay 1|SATA\n");
}

TEST_F(DriveLists, OfM2DrivesPreferWhatTheyReport) {
  given_marvell(12);
  given_drive(3, 1, 4);
  given_drive(3, 2, 5);
  EXPECT_EQ(list(zymdb_get_m2_disk_list, &list_), "M.2 Bay1|M.2 SATA\nM.2 Bay2|M.2 NVMe\n");
  EXPECT_EQ(list_.disks[0].PCIFuncKey, 0x00170000u);
  EXPECT_EQ(list_.disks[0].CtrlType, 3);
  given_report(3, 2);
  EXPECT_EQ(list(zymdb_get_m2_disk_list, &list_), "M.2 Bay2|M.2 NVMe|reported\n");
  EXPECT_EQ(list_.disks[0].PCIFuncKey, 0x00170000u);
}

TEST_F(DriveLists, Of7mmDrivesDependOnTheController) {
  given_drive(4, 1, 7);
  given_drive(4, 2, 7, 0);
  given_drive(4, 3, 6);
  EXPECT_EQ(list(zymdb_get_7mm_disk_list, &list_),
            "7MM Bay1|7MM NVMe\n7MM Bay2|7MM NVMe\n7MM Bay3|7MM SATA\n");
  given_property("/dc/votc/dm/drive/mv/1/type", "\4");
  EXPECT_EQ(list(zymdb_get_7mm_disk_list, &list_), "7MM Bay1|7MM NVMe\n");
  given_report(4, 2);
  EXPECT_EQ(list(zymdb_get_7mm_disk_list, &list_), "7MM Bay2|7MM NVMe|reported\n");
}

TEST_F(DriveLists, Of7mmDrivesOnASataControllerHoldSataDrives) {
  given_property("/dc/votc/dm/drive/mv/1/type", "\2");
  given_drive(4, 1, 7);
  given_drive(4, 3, 6);
  given_report(4, 1);
  EXPECT_EQ(list(zymdb_get_7mm_disk_list, &list_), "7MM Bay3|7MM SATA\n");
}

TEST_F(DriveLists, OfAControllerHoldOneKindOfPlaceOrBoth) {
  given_drive(3, 1, 5);
  given_drive(4, 1, 7);
  given_drive(2, 1, 3);
  EXPECT_EQ(list(zymdb_get_ctrl_aim_disk_list, 12, &list_, 3), "M.2 Bay1|M.2 NVMe\n");
  EXPECT_EQ(list(zymdb_get_ctrl_aim_disk_list, 12, &list_, 9), "M.2 Bay1|M.2 NVMe\n7MM Bay1|7MM NVMe\n");
  EXPECT_EQ(list(zymdb_get_ctrl_aim_disk_list, 13, &list_, 9), "");
  given_report(2, 9);
  EXPECT_EQ(list(zymdb_get_ctrl_aim_disk_list, 12, &list_, 9), "Bay 9|NVMe|reported\n");
}

TEST_F(DriveLists, OfU2DrivesLookIntoNvmeBaysAndSlots) {
  given_property("/dc/votc/dm/drive/hdd/2/type", "\3");
  given_property("/dc/votc/dm/drive/hdd/3/type", "\x8");
  given_property("/dc/votc/dm/drive/hdd/4/type", "\2");
  for (const int bay : {1, 2, 3}) given_drive(2, bay, 3);
  given_drive(1, 5, 3);
  given_report(1, 5);
  given_report(1, 6);
  given("PCIs", {{"Location", 2}, {"SlotNo", 6}, {"ClsCode", 0x010802}, {"BusNo", 0x3B}});
  EXPECT_EQ(list(zymdb_get_u2_aic_nvme_disk_list, &list_),
            "Slot 5|NVMe|reported\nSlot 6|NVMe|reported\nBay 1|NVMe\nBay 2|EDSFF NVMe\n");
  EXPECT_EQ(list_.disks[1].PCIFuncKey, 0x003B0000u);
}

TEST_F(DriveLists, MergedHoldEveryKind) {
  given_drive(3, 1, 4);
  given_drive(4, 1, 6);
  given_drive(2, 4, 3);
  given_drive(2, 5, 1);
  zymdb_get_merged_disk_list(&list_);
  EXPECT_EQ(listed(), "M.2 Bay1|M.2 SATA\n7MM Bay1|7MM SATA\nBay 4|NVMe\nBay 5|SATA\n");
}

TEST_F(DriveLists, OfAFunctionHoldItsDrives) {
  given_marvell(12);
  given_drive(3, 1, 4);
  given_drive(2, 5, 1);
  EXPECT_EQ(list(zymdb_get_disk_list_funkey, 0x00170000u, &list_), "M.2 Bay1|M.2 SATA\n");
  _ZYMDB_AimDisk_List none{5, nullptr};
  EXPECT_EQ(zymdb_get_disk_list_funkey(7, &none), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_EQ(none.count, 0u);
}

TEST_F(DriveLists, TheNvmeDriveOfABayIsReadUnlessThereAreTwo) {
  _ZYMDB_AimDisk drive{};
  EXPECT_EQ(zymdb_get_nvme_aim_disk(2, 4, &drive), ZYM_DB_STATUS_INVALID_PARAM);
  given_drive(2, 4, 3);
  EXPECT_EQ(zymdb_get_nvme_aim_disk(2, 4, &drive), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(drive.Location, "Bay 4");
  given_drive(2, 4, 3);
  drive = {};
  EXPECT_EQ(zymdb_get_nvme_aim_disk(2, 4, &drive), ZYM_DB_STATUS_NO_DB);
  EXPECT_STREQ(drive.Location, "");
}

TEST_F(DriveLists, HealthIsThatOfTheSensors) {
  given("SensorSlotMap", {{"HardwareTypeId", 21}, {"SlotNo", 4}, {"HealthStatusId", 3}});
  given("SensorSlotMap", {{"HardwareTypeId", 5}, {"SlotNo", 5}, {"HealthStatusId", 3}});
  given("SensorSlotMap", {{"HardwareTypeId", 2}, {"SlotNo", 129}, {"HealthStatusId", 1}});
  given_drive(2, 4, 1);
  given_drive(2, 5, 1);
  given_drive(3, 1, 4);
  list(zymdb_get_disk_list, &list_);
  ASSERT_EQ(list_.count, 3u);
  EXPECT_EQ(list_.disks[0].HealthStatusId, 3);
  EXPECT_EQ(list_.disks[1].HealthStatusId, 2);
  EXPECT_EQ(list_.disks[2].HealthStatusId, 1);
}

TEST_F(DriveLists, BackplanesAreCounted) {
  given_property("/dc/votc/dm/drive/sep/1/presence", "\1");
  given_property("/dc/votc/dm/drive/sep/1/max_drives", "\x8");
  given_property("/dc/votc/dm/drive/sep/1/installed_drives", "\3");
  given_property("/dc/votc/dm/drive/sep/2/presence", std::string_view("\0", 1));
  given_property("/dc/votc/dm/drive/sep/2/max_drives", "\x8");
  given_property("/dc/votc/dm/drive/sep/3/presence", "\1");
  given_property("/dc/votc/dm/drive/sep/3/max_drives", "\x10");
  unsigned char most = 0;
  unsigned char installed = 0;
  EXPECT_EQ(zymdb_get_bp_drive_count(&most, &installed), ZYM_DB_STATUS_OK);
  EXPECT_EQ(most, 24);
  EXPECT_EQ(installed, 3);
}

TEST_F(DriveLists, ControllersAreFoundByTheirIdentifiers) {
  given_marvell(12);
  given_marvell(255);
  unsigned char slots[4] = {};
  unsigned char count = 0;
  EXPECT_EQ(zymdb_get_marvell_ctrl_slots(slots, 4, &count), ZYM_DB_STATUS_OK);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(slots[0], 12);
  given("PCIs", {{"DeviceId", 16}, {"SubDeviceId", 17}, {"SlotNo", 3}});
  EXPECT_EQ(zymdb_get_ctrl_slot(16, 17, slots), ZYM_DB_STATUS_OK);
  EXPECT_EQ(slots[0], 3);
  EXPECT_EQ(zymdb_get_ctrl_slot(16, 18, slots), ZYM_DB_STATUS_DONE);
}

}  // namespace
