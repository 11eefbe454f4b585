// The generic, misc and VPD records on the embedded database.
#include <gmock/gmock.h>

#include <cstring>

#include "support/inventory.h"
#include "zymdb_pci.h"

namespace {

class FunctionInfo : public InventoryTest {};

TEST_F(FunctionInfo, AFunctionIsReadByItsKey) {
  given("PCIs", {{"FunKey", 0x3B0001},
                 {"BridgeId", 0x3A0000},
                 {"SegNo", 0},
                 {"BusNo", 0x3B},
                 {"DeviceNo", 0},
                 {"FunctionNo", 1},
                 {"VendorId", 0x15B3},
                 {"DeviceId", 0x1017},
                 {"ClsCode", 0x020000},
                 {"RevId", 2},
                 {"SlotNo", 3},
                 {"Location", 1},
                 {"SlotDesignation", "PCIe Slot 3"},
                 {"SlotType", 0xB6},
                 {"LanesInUse", 8},
                 {"MaxLanes", 16},
                 {"MaxPCIeType", 3},
                 {"PCIeType", 2}});
  _ZYMDB_PCI_Generic info{};
  EXPECT_EQ(zymdb_get_pci_generic_info(0x3B0001, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info._id, 1u);
  EXPECT_EQ(info.BridgeId, 0x3A0000u);
  EXPECT_EQ(info.BusNo, 0x3B);
  EXPECT_EQ(info.FunctionNo, 1);
  EXPECT_EQ(info.VendorId, 0x15B3);
  EXPECT_EQ(info.ClsCode, 0x020000u);
  EXPECT_EQ(info.RevId, 2);
  EXPECT_STREQ(info.SlotDesignation, "PCIe Slot 3");
  EXPECT_EQ(info.SlotType, 0xB6);
  EXPECT_EQ(info.LanesInUse, 8);
  EXPECT_EQ(info.PCIeType, 2);
}

TEST_F(FunctionInfo, ALinkWithoutDataHasTheUsualOne) {
  given("PCIs", {{"FunKey", 1}});
  _ZYMDB_PCI_Generic info{};
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info.LanesInUse, 4);
  EXPECT_EQ(info.MaxLanes, 16);
  EXPECT_EQ(info.MaxPCIeType, 4);
  EXPECT_EQ(info.PCIeType, 3);
  EXPECT_EQ(info.VendorId, 0);
  EXPECT_STREQ(info.SlotDesignation, "");
}

TEST_F(FunctionInfo, AnUnknownFunctionLeavesTheRecordAndIsNoFailure) {
  _ZYMDB_PCI_Generic info;
  std::memset(static_cast<void*>(&info), 0x5A, sizeof info);
  const _ZYMDB_PCI_Generic before = info;
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
}

TEST_F(FunctionInfo, TheListKeepsOneCharacterLessOfADesignation) {
  const std::string designation(70, 'd');
  given("PCIs", {{"FunKey", 1}, {"SlotDesignation", designation}});
  given("PCIs", {{"FunKey", 2}, {"BusNo", 7}});
  _ZYMDB_PCI_Generic info{};
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info.SlotDesignation, std::string(64, 'd'));
  _ZYMDB_PCI_Generic_List list{};
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list, nullptr), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list.count, 2u);
  EXPECT_EQ(list.items[0].SlotDesignation, std::string(63, 'd'));
  EXPECT_EQ(list.items[1].BusNo, 7);
  std::free(list.items);
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list, "BusNo=7"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 1u);
  std::free(list.items);
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list, "BusNo=8"), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 0u);
}

TEST_F(FunctionInfo, AnUnrecordedConnectorAndPackageFollowFromThePlace) {
  given("PCIs", {{"FunKey", 1}, {"Location", 0}, {"HardwareTypeId", 0}});
  given("PCIMisc", {{"PCIFuncKey", 1}, {"MaxDataWidth", 64}});
  _ZYMDB_PCI_Misc misc{};
  EXPECT_EQ(zymdb_get_pci_misc_info(1, &misc), ZYM_DB_STATUS_OK);
  EXPECT_EQ(misc.MaxDataWidth, 64);
  EXPECT_EQ(misc.ConnectorType, 32772);
  EXPECT_STREQ(misc.ConnectorTypeName, "Onboard");
  EXPECT_EQ(misc.PackageType, 32768);
  EXPECT_STREQ(misc.PackageTypeName, "Onboard");
}

TEST_F(FunctionInfo, ARecordedConnectorIsReadInAnyBaseAndLeavesAnUnrecordedPackageUnknown) {
  given("PCIMisc", {{"PCIFuncKey", 1},
                    {"ConnectorLayout", "0x8005"},
                    {"OtherPackageType", "a mezzanine"},
                    {"AIMSpecVersion", "1.2.3.4.5"}});
  _ZYMDB_PCI_Misc misc{};
  EXPECT_EQ(zymdb_get_pci_misc_info(1, &misc), ZYM_DB_STATUS_OK);
  EXPECT_EQ(misc.ConnectorType, 32773);
  EXPECT_STREQ(misc.ConnectorTypeName, "ML2");
  EXPECT_STREQ(misc.PackageTypeName, "Unknown");
  EXPECT_STREQ(misc.OtherPackageType, "a mezzanine");
  EXPECT_STREQ(misc.AIMSpecVersion, "1.2.3.4.");
}

TEST_F(FunctionInfo, AFunctionWithoutAMiscRowAnswersThatThereAreNoMore) {
  _ZYMDB_PCI_Misc misc{};
  EXPECT_EQ(zymdb_get_pci_misc_info(1, &misc), ZYM_DB_STATUS_DONE);
}

TEST_F(FunctionInfo, VitalProductDataAreThoseOfTheFunctionsHardware) {
  given("PCIs", {{"FunKey", 1}, {"HardwareId", 77}, {"HardwareTypeId", 3}});
  given("VPDs", {{"HardwareId", 77}, {"HardwareTypeId", 2}, {"PartNo", "another's"}});
  given(
      "VPDs",
      {{"HardwareId", 77}, {"HardwareTypeId", 3}, {"PartNo", "01AB234"}, {"SerialNo", std::string(30, 's')}});
  _ZYMDB_PCI_VPD vpd{};
  EXPECT_EQ(zymdb_get_pci_vpd_info(1, &vpd), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(vpd.PartNo, "01AB234");
  EXPECT_EQ(vpd.SerialNo, std::string(16, 's'));
  EXPECT_STREQ(vpd.UUID, "");
}

TEST_F(FunctionInfo, VitalProductDataOfAnUnknownFunctionAreAWrongArgument) {
  _ZYMDB_PCI_VPD vpd{};
  EXPECT_EQ(zymdb_get_pci_vpd_info(1, &vpd), ZYM_DB_STATUS_INVALID_PARAM);
}

TEST_F(FunctionInfo, WithoutADatabaseEveryReadSaysSo) {
  lose_database();
  _ZYMDB_PCI_Generic info{};
  _ZYMDB_PCI_Generic_List list{};
  _ZYMDB_PCI_Misc misc{};
  _ZYMDB_PCI_VPD vpd{};
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_misc_info(1, &misc), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_pci_vpd_info(1, &vpd), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
