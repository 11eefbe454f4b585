// PLDM components on the embedded database.
#include <cstring>
#include <string>
#include <vector>

#include "support/inventory.h"
#include "zymdb_firmware.h"

namespace {

class PldmFirmware : public InventoryTest {
 protected:
  using Lister = int (*)(_ZYMDB_PLDM_Firmware_List*);

  static std::vector<std::string> names(Lister lister) {
    _ZYMDB_PLDM_Firmware_List list{};
    EXPECT_EQ(lister(&list), ZYM_DB_STATUS_OK);
    std::vector<std::string> names;
    for (uint32_t i = 0; i < list.Count; ++i) names.emplace_back(list.Firmwares[i].DeviceName);
    std::free(list.Firmwares);
    return names;
  }
  static void given_state(const char* name, int updated, int error, int status) {
    given("PldmDeviceFirmware",
          {{"DeviceName", name}, {"Updated", updated}, {"UpdateErrCode", error}, {"Status", status}});
  }
  static void given_device(const char* name, int update_support, int funkey = 0) {
    given("PldmDeviceFirmware", {{"DeviceName", name},
                                 {"Location", 1},
                                 {"SlotNo", 3},
                                 {"PCIFuncKey", funkey},
                                 {"UpdateSupport", update_support}});
  }
  static _ZYMDB_PLDM_Firmware device(const char* software_id, const char* version) {
    _ZYMDB_PLDM_Firmware device{};
    std::strcpy(device.DeviceName, "device");
    std::strcpy(device.SoftwareID, software_id);
    std::strcpy(device.VersionString, version);
    device.DeviceType = 15;
    device.Location = 1;
    device.SlotNo = 3;
    return device;
  }
  static void discover(const _ZYMDB_PLDM_Firmware& device) {
    EXPECT_EQ(zymdb_insert_or_update_pldm_firmware(1, 2, 3, 4, &device), ZYM_DB_STATUS_OK);
  }
};

using Names = std::vector<std::string>;

TEST_F(PldmFirmware, IsListedByWhatBecameOfItsUpdate) {
  given_state("idle", 0, 0, 0);
  given_state("pending", 0, 0, 2);
  given_state("succeeded", 1, 0, 0);
  given_state("failed", 1, 9, 2);
  given_state("failed without an update", 0, 9, 1);
  EXPECT_EQ(names(zymdb_get_pldm_firmware_list).size(), 5u);
  EXPECT_EQ(names(zymdb_get_pldm_firmware_pending_list), (Names{"pending", "failed"}));
  EXPECT_EQ(names(zymdb_get_pldm_firmware_updated_list), (Names{"succeeded", "failed"}));
  EXPECT_EQ(names(zymdb_get_pldm_firmware_update_failure_list), Names{"failed"});
  EXPECT_EQ(names(zymdb_get_pldm_firmware_update_success_list), Names{"succeeded"});
}

TEST_F(PldmFirmware, AnErrorWithoutAnUpdateIsNoFailedOneAndAMissingColumnIsInNeitherList) {
  given_state("an error alone", 0, 17, 0);
  given("PldmDeviceFirmware",
        {{"DeviceName", "no error column"}, {"Updated", 1}, {"UpdateErrCode", nullptr}});
  given("PldmDeviceFirmware",
        {{"DeviceName", "no updated column"}, {"Updated", nullptr}, {"UpdateErrCode", 1}});
  EXPECT_EQ(names(zymdb_get_pldm_firmware_update_failure_list), Names{});
  EXPECT_EQ(names(zymdb_get_pldm_firmware_update_success_list), Names{});
}

TEST_F(PldmFirmware, OfAnEmptyTableIsNone) {
  for (const Lister lister :
       {zymdb_get_pldm_firmware_list, zymdb_get_pldm_firmware_pending_list,
        zymdb_get_pldm_firmware_updated_list, zymdb_get_pldm_firmware_update_failure_list,
        zymdb_get_pldm_firmware_update_success_list, zymdb_get_pldm_firmware_marvell_ctrl_list})
    EXPECT_EQ(names(lister), Names{});
}

TEST_F(PldmFirmware, MarvellControllersAreThoseOnTheMakersOwnBoards) {
  const auto given_controller = [](const char* name, int vendor, int board, int device) {
    given("PldmDeviceFirmware",
          {{"DeviceName", name}, {"VendorId", vendor}, {"SubVendorId", board}, {"DeviceId", device}});
  };
  given_controller("9230", 0x1B4B, BOARD_SUBSYSTEM_VENDOR_ID, 0x9230);
  given_controller("2241", 0x1B4B, BOARD_SUBSYSTEM_VENDOR_ID, 0x2241);
  given_controller("another device", 0x1B4B, BOARD_SUBSYSTEM_VENDOR_ID, 0x9235);
  given_controller("another board", 0x1B4B, BOARD_SUBSYSTEM_VENDOR_ID - 1, 0x9230);
  given_controller("another vendor", 0x1B4C, BOARD_SUBSYSTEM_VENDOR_ID, 0x9230);
  EXPECT_EQ(names(zymdb_get_pldm_firmware_marvell_ctrl_list), (Names{"9230", "2241"}));
}

TEST_F(PldmFirmware, NullColumnsAreEmptyZeroAndOfTheUnknownType) {
  given("PldmDeviceFirmware", {{"DeviceType", nullptr}, {"SoftwareID", "123456789"}});
  _ZYMDB_PLDM_Firmware_List list{};
  EXPECT_EQ(zymdb_get_pldm_firmware_list(&list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.Count, 1u);
  EXPECT_EQ(list.Firmwares[0].DeviceType, 23u);
  EXPECT_STREQ(list.Firmwares[0].DeviceName, "");
  EXPECT_STREQ(list.Firmwares[0].SoftwareID, "12345678");
  std::free(list.Firmwares);
}

TEST_F(PldmFirmware, OfASlotIsTheFirstOfTwoUnlessTheSecondAloneCanBeUpdated) {
  _ZYMDB_PLDM_Firmware found{};
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, -1, 0), ZYM_DB_STATUS_NOT_FOUND);
  given_device("first", 0);
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, -1, 0), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(found.DeviceName, "first");
  given_device("second", 1);
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, -1, 0), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(found.DeviceName, "second");
  given_device("third", 1);
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, -1, 0), ZYM_DB_STATUS_NOT_FOUND);
  EXPECT_STREQ(found.DeviceName, "second");
}

TEST_F(PldmFirmware, OfASlotIsNarrowedToThePciDevice) {
  given("PCIs", {{"FunKey", 5}, {"BusNo", 59}, {"DeviceNo", 0}});
  given("PCIs", {{"FunKey", 6}, {"BusNo", 60}, {"DeviceNo", 0}});
  given_device("on bus 59", 1, 5);
  given_device("on bus 60", 1, 6);
  _ZYMDB_PLDM_Firmware found{};
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, 60, 0), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(found.DeviceName, "on bus 60");
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, -1, 0), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(found.DeviceName, "on bus 59");
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &found, 60, 1), ZYM_DB_STATUS_NOT_FOUND);
}

TEST_F(PldmFirmware, DiscoveredAgainIsRefreshedOnlyWhenKeyOrSoftwareIdChanged) {
  const auto stored = [] { return rows("PldmDeviceFirmware", {"PCIKey", "SoftwareID", "VersionString"}); };
  discover(device("15B3A2D4", "1"));
  discover(device("15B3A2D4", "2"));
  EXPECT_EQ(stored(), "65539|15B3A2D4|1\n");
  discover(device("15B3A2D6", "3"));
  EXPECT_EQ(stored(), "65539|15B3A2D6|3\n");
}

TEST_F(PldmFirmware, DiscoveredAgainWithTheSameSoftwareIdIsNotWrittenWhateverTheIdLooksLike) {
  for (const char* software_id : {"15E30001", "00012345", "0E123456", "DeviceXX", "ABCDEF01", "0x1F", "0X1f",
                                  "12", "0", "1e5", "15E3", "count", ""}) {
    _ZYMDB_PLDM_Firmware unchanged = device(software_id, "1");
    discover(unchanged);
    std::strcpy(unchanged.VersionString, "2");
    testing::internal::CaptureStderr();
    discover(unchanged);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << software_id;
    EXPECT_EQ(rows("PldmDeviceFirmware", {"SoftwareID", "VersionString"}), std::string(software_id) + "|1\n");
    EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(15), ZYM_DB_STATUS_OK);
  }
}

TEST_F(PldmFirmware, AnotherSoftwareIdIsAnotherEvenOfTheSameNumber) {
  const char* before = "none";
  discover(device(before, "1"));
  for (const char* software_id : {"0x1F", "31", "031", "0X1F", "", "0"}) {
    discover(device(software_id, software_id));
    EXPECT_EQ(rows("PldmDeviceFirmware", {"SoftwareID", "VersionString"}),
              std::string(software_id) + "|" + software_id + "\n")
        << "after " << before;
    before = software_id;
  }
}

TEST_F(PldmFirmware, DiscoveryTouchesNeitherPendingVersionsNorResults) {
  discover(device("A1", "1"));
  _ZYMDB_PLDM_Firmware state = device("A1", "1");
  std::strcpy(state.PendingVersionString, "2");
  std::strcpy(state.UpdateErrString, "broke");
  state.Updated = 1;
  state.Status = 2;
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, &state), ZYM_DB_STATUS_OK);
  discover(device("B2", "3"));
  EXPECT_EQ(rows("PldmDeviceFirmware", {"SoftwareID", "VersionString", "PendingVersionString",
                                        "UpdateErrString", "Updated", "Status"}),
            "B2|3|2|broke|1|2\n");
}

TEST_F(PldmFirmware, AnotherTypeSlotOrPlaceIsAnotherRow) {
  _ZYMDB_PLDM_Firmware other = device("A1", "1");
  discover(other);
  other.DeviceType = 16;
  discover(other);
  other.SlotNo = 4;
  discover(other);
  other.Location = 0;
  discover(other);
  EXPECT_EQ(rows("PldmDeviceFirmware", {"DeviceType", "SlotNo", "Location", "PCIKey", "VendorId", "DeviceId",
                                        "SubVendorId", "SubDeviceId"}),
            "15|3|1|65539|1|2|3|4\n16|3|1|65539|1|2|3|4\n16|4|1|65540|1|2|3|4\n16|4|0|4|1|2|3|4\n");
}

TEST_F(PldmFirmware, UpdateStateReachesOnlyTheComponentOfItsSlotAndSoftwareId) {
  discover(device("A1", "1"));
  _ZYMDB_PLDM_Firmware other = device("A1", "1");
  other.SlotNo = 4;
  discover(other);
  _ZYMDB_PLDM_Firmware state = device("A1", "2");
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, &state), ZYM_DB_STATUS_OK);
  std::strcpy(state.SoftwareID, "B2");
  std::strcpy(state.VersionString, "3");
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, &state), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("PldmDeviceFirmware", {"SlotNo", "VersionString"}), "3|2\n4|1\n");
}

TEST_F(PldmFirmware, ClearingThePendingStateEndsTwosAlone) {
  for (const int status : {0, 1, 2, 3, 2}) given_state("device", 0, 0, status);
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("PldmDeviceFirmware", {"Status"}), "0\n1\n0\n3\n0\n");
  EXPECT_EQ(names(zymdb_get_pldm_firmware_pending_list), Names{});
}

TEST_F(PldmFirmware, ClearingATypeLeavesTheOthers) {
  for (const int type : {15, 16, 15, 150}) given("PldmDeviceFirmware", {{"DeviceType", type}});
  EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(15), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("PldmDeviceFirmware", {"DeviceType"}), "16\n150\n");
}

TEST_F(PldmFirmware, NeedsADatabase) {
  lose_database();
  _ZYMDB_PLDM_Firmware record = device("A1", "1");
  EXPECT_EQ(zymdb_get_pldm_firmware(1, 3, &record, -1, -1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_update_pldm_firmware(1, 3, &record), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_insert_or_update_pldm_firmware(1, 2, 3, 4, &record), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_clear_all_pldm_firmware_pending_status(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_clear_pldm_firmware_by_type(15), ZYM_DB_STATUS_INVALID_PARAM);
}

}  // namespace
