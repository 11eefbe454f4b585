// Components of adapters on the embedded database.
#include <cstring>

#include "support/inventory.h"
#include "zymdb_firmware.h"

namespace {

constexpr unsigned kPciKey = 0x10003;
constexpr unsigned kFunction = 0x3B0000;

_ZYMDB_PCI_Firmware component(const char* software_id, uint16_t classification, const char* version) {
  _ZYMDB_PCI_Firmware component{};
  std::strcpy(component.FirmwareName, "name");
  std::strcpy(component.VersionString, version);
  std::strcpy(component.SoftwareID, software_id);
  component.Classification = classification;
  return component;
}

class AdapterFirmware : public InventoryTest {
 protected:
  AdapterFirmware() {
    // An adapter of two functions, each with hardware of its own.
    for (int function = 0; function < 2; ++function) {
      given("PCIAdapter", {{"PCIKey", kPciKey}, {"PCIFuncKey", kFunction + function}, {"AIMSupported", 1}});
      given("PCIs", {{"DevKey", kPciKey},
                     {"FunKey", kFunction + function},
                     {"HardwareId", 700 + function},
                     {"HardwareTypeId", 3}});
    }
  }
  ~AdapterFirmware() override { std::free(list_.Firmwares); }

  static int write(std::vector<_ZYMDB_PCI_Firmware> components) {
    _ZYMDB_PCI_Firmware_List list{static_cast<uint32_t>(components.size()), components.data()};
    return zymdb_update_adapter_firmware_list(kPciKey, &list);
  }
  int list(unsigned function = kFunction) {
    std::free(list_.Firmwares);
    return zymdb_get_pci_firmware_list(function, &list_);
  }
  static std::string stored() {
    return rows("Firmwares", {"HardwareId", "SoftwareID", "Classification", "VersionString", "FirmwareName"});
  }

  _ZYMDB_PCI_Firmware_List list_{};
};

TEST_F(AdapterFirmware, WrittenToAnAdapterIsListedByItsFunctions) {
  EXPECT_EQ(write({component("A", 0x8005, "1.0"), component("B", 0x810E, "2.0")}), ZYM_DB_STATUS_OK);
  for (int function = 0; function < 2; ++function) {
    EXPECT_EQ(list(kFunction + function), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.Count, 2u);
    EXPECT_STREQ(list_.Firmwares[0].SoftwareID, "A");
    EXPECT_STREQ(list_.Firmwares[0].ClassificationString, "Boot ROM");
    EXPECT_STREQ(list_.Firmwares[1].VersionString, "2.0");
    EXPECT_STREQ(list_.Firmwares[1].ClassificationString, "NCSI firmware");
  }
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "HardwareTypeId", "SoftwareID"}),
            "700|3|A\n700|3|B\n701|3|A\n701|3|B\n");
}

TEST_F(AdapterFirmware, WrittenAgainChangesOnlyDateAndVersion) {
  EXPECT_EQ(write({component("A", 1, "1.0")}), ZYM_DB_STATUS_OK);
  _ZYMDB_PCI_Firmware changed = component("A", 1, "1.1");
  std::strcpy(changed.FirmwareName, "another name");
  std::strcpy(changed.Description, "another description");
  std::strcpy(changed.Manufacture, "another maker");
  std::strcpy(changed.ReleaseDate, "2024-05-01");
  EXPECT_EQ(write({changed}), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "FirmwareName", "VersionString", "Description", "ReleaseDate",
                               "Manufacture"}),
            "700|name|1.1||2024-05-01|\n701|name|1.1||2024-05-01|\n");
}

TEST_F(AdapterFirmware, OfAnotherClassOrSoftwareIdIsAnotherRow) {
  EXPECT_EQ(write({component("A", 1, "1"), component("A", 2, "2"), component("B", 1, "3")}),
            ZYM_DB_STATUS_OK);
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 3u);
}

TEST_F(AdapterFirmware, SoftwareIdsThatDifferAfterTheSixteenthCharacterAreOne) {
  _ZYMDB_PCI_Firmware first = component("0123456789ABCDEF", 1, "1");
  _ZYMDB_PCI_Firmware second = component("0123456789ABCDEF", 1, "2");
  first.SoftwareID[16] = 'x';
  second.SoftwareID[16] = 'y';
  EXPECT_EQ(write({first, second}), ZYM_DB_STATUS_OK);
  EXPECT_EQ(stored(), "700|0123456789ABCDEF|1|2|name\n701|0123456789ABCDEF|1|2|name\n");
}

TEST_F(AdapterFirmware, OfAFunctionWithoutComponentsIsEmpty) {
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_F(AdapterFirmware, ANullOrForeignClassificationIsUnknownAndAPrefixCostsNoDigits) {
  given("Firmwares", {{"HardwareTypeId", 3}, {"HardwareId", 700}, {"Classification", nullptr}});
  for (const unsigned code : {0x8009u, 0x8111u, 0x18000u})
    given("Firmwares", {{"HardwareTypeId", 3}, {"HardwareId", 700}, {"Classification", code}});
  given("Firmwares", {{"HardwareTypeId", 3}, {"HardwareId", 700}, {"Classification", "0x8100"}});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.Count, 5u);
  for (int i = 0; i < 3; ++i) EXPECT_STREQ(list_.Firmwares[i].ClassificationString, "Unknown");
  EXPECT_EQ(list_.Firmwares[0].Classification, 0);
  EXPECT_EQ(list_.Firmwares[1].Classification, 0x8009);
  // Six digits are cut to five: 98304 keeps all of its own.
  EXPECT_EQ(list_.Firmwares[3].Classification, 0x8000);
  EXPECT_STREQ(list_.Firmwares[4].ClassificationString, "VPD-V0");
}

TEST_F(AdapterFirmware, OfAnUnknownFunctionIsAWrongArgument) {
  EXPECT_EQ(list(kFunction + 9), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(list_.Firmwares, nullptr);
}

TEST_F(AdapterFirmware, OfAnUnknownAdapterIsNotWritten) {
  std::vector<_ZYMDB_PCI_Firmware> components{component("A", 1, "1")};
  _ZYMDB_PCI_Firmware_List list{1, components.data()};
  EXPECT_EQ(zymdb_update_adapter_firmware_list(99, &list), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(stored(), "");
}

TEST_F(AdapterFirmware, AQuoteInASoftwareIdIsAFailedLookUpAndLeavesTheOthersAlone) {
  EXPECT_EQ(write({component("A\" OR 1=1 OR \"", 1, "1"), component("B\"", 1, "2"), component("C", 1, "3")}),
            ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("Firmwares", {"SoftwareID"}, "SoftwareID=\"C\""), "C\nC\n");
}

TEST_F(AdapterFirmware, OneOfAClassReplacesTheOtherOfItsHardware) {
  _ZYMDB_PCI_Firmware first = component("A", 0x8006, "1");
  _ZYMDB_PCI_Firmware second = component("B", 0x8006, "2");
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, &first), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, &second), ZYM_DB_STATUS_OK);
  second.Classification = 1;
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, &second), ZYM_DB_STATUS_OK);
  EXPECT_EQ(stored(), "700|B|32774|2|name\n700|B|1|2|name\n");
}

TEST_F(AdapterFirmware, WrittenAloneIsOfHardwareType3AndListedOnlyByFunctionsOfThatType) {
  given("PCIs", {{"FunKey", 5}, {"HardwareId", 800}, {"HardwareTypeId", 4}});
  const _ZYMDB_PCI_Firmware one = component("A", 1, "1");
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, &one), ZYM_DB_STATUS_OK);
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(800, &one), ZYM_DB_STATUS_OK);
  EXPECT_EQ(rows("Firmwares", {"HardwareId", "HardwareTypeId"}), "700|3\n800|3\n");
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 1u);
  EXPECT_EQ(list(5), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.Count, 0u);
}

TEST_F(AdapterFirmware, NeedsADatabase) {
  lose_database();
  const _ZYMDB_PCI_Firmware one = component("A", 1, "1");
  EXPECT_EQ(list(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(write({one}), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_insert_or_update_firmware_info(700, &one), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
