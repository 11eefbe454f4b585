// Firmware of embedded devices on the embedded database.
#include <cstring>

#include "support/inventory.h"
#include "zymdb_firmware.h"

namespace {

class EmbeddedFirmware : public InventoryTest {
 protected:
  int write() const { return zymdb_insert_or_update_embedded_firmware_info(&device_); }
  static std::string stored() {
    return rows("EmbeddedDeviceFirmware", {"DeviceName", "DeviceIndex", "StructRev", "Version", "SoftwareID",
                                           "Class", "Category", "SubCategory", "Checksum"});
  }

  _ZYMDB_Embedded_Firmware device_{"device", 0, 1, 2, "BIOS0001", 3, 4, 5, 6};
};

TEST_F(EmbeddedFirmware, IsListedAsItWasWritten) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  _ZYMDB_Embedded_Firmware_List list{};
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.Count, 1u);
  EXPECT_STREQ(list.Firmwares[0].DeviceName, "device");
  EXPECT_STREQ(list.Firmwares[0].SoftwareID, "BIOS0001");
  EXPECT_EQ(list.Firmwares[0].Class, 3);
  EXPECT_EQ(list.Firmwares[0].Checksum, 6);
  std::free(list.Firmwares);
}

TEST_F(EmbeddedFirmware, WrittenTwiceIsLeftUntouched) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(stored(), "device|0|1|2|BIOS0001|3|4|5|6\n");
}

TEST_F(EmbeddedFirmware, ADifferenceInAnyColumnIsWritten) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  const std::pair<uint8_t _ZYMDB_Embedded_Firmware::*, const char*> bytes[] = {
      {&_ZYMDB_Embedded_Firmware::StructRev, "device|0|255|2|BIOS0001|3|4|5|6\n"},
      {&_ZYMDB_Embedded_Firmware::Version, "device|0|255|255|BIOS0001|3|4|5|6\n"},
      {&_ZYMDB_Embedded_Firmware::Category, "device|0|255|255|BIOS0001|3|255|5|6\n"},
      {&_ZYMDB_Embedded_Firmware::SubCategory, "device|0|255|255|BIOS0001|3|255|255|6\n"},
      {&_ZYMDB_Embedded_Firmware::Checksum, "device|0|255|255|BIOS0001|3|255|255|255\n"}};
  for (const auto& [field, expected] : bytes) {
    device_.*field = 255;
    EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
    EXPECT_EQ(stored(), expected);
  }
  device_.Class = 65535;
  std::strcpy(device_.DeviceName, "another");
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(stored(), "another|0|255|255|BIOS0001|65535|255|255|255\n");
}

TEST_F(EmbeddedFirmware, DevicesOfOneSoftwareIdAreTwoRowsByTheirIndex) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  device_.DeviceIndex = 1;
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("EmbeddedDeviceFirmware", {"SoftwareID", "DeviceIndex"}), "BIOS0001|0\nBIOS0001|1\n");
}

TEST_F(EmbeddedFirmware, AQuoteInANameMakesTheFilterInvalid) {
  std::strcpy(device_.DeviceName, "the board's");
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);  // no row to compare with yet
  EXPECT_EQ(write(), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(rows("EmbeddedDeviceFirmware", {"DeviceName"}), "the board's\n");
}

TEST_F(EmbeddedFirmware, ASoftwareIdThatCannotBeLookedUpIsInsertedEachTime) {
  std::strcpy(device_.SoftwareID, "it's");
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("EmbeddedDeviceFirmware", {"SoftwareID"}), "it's\nit's\n");
}

TEST_F(EmbeddedFirmware, ClearedIsEmpty) {
  EXPECT_EQ(write(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), ZYM_DB_STATUS_OK);
  _ZYMDB_Embedded_Firmware_List list{};
  EXPECT_EQ(zymdb_get_embedded_firmware_list(&list), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.Count, 0u);
  std::free(list.Firmwares);
}

TEST_F(EmbeddedFirmware, NeedsADatabase) {
  lose_database();
  EXPECT_EQ(write(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_clear_all_embedded_firmware_info(), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
