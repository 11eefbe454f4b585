// The generic, misc and VPD records: exact calls, and what is answered to every failure of the client.
#include <gmock/gmock.h>

#include <cstring>

#include "pci/function_lookup.h"
#include "support/scripted_client.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

constexpr char kGenericColumns[] =
    "_id,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,SubDeviceId,"
    "SlotNo,Location,SlotDesignation,SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort,NodeIndex,"
    "FunType,"
    "LanesInUse,MaxLanes,MaxPCIeType,PCIeType";

// A record whose bytes tell whether anything was written.
template <class Record>
struct Marked {
  Marked() { std::memset(static_cast<void*>(&record), 0x5A, sizeof record); }
  bool is_untouched() const {
    const Marked fresh;
    return std::memcmp(&record, &fresh.record, sizeof record) == 0;
  }
  Record record;
};

class GenericInfo : public scripted::ClientTest {
 protected:
  Marked<_ZYMDB_PCI_Generic> info_;
};

TEST_F(GenericInfo, AsksForTheColumnsInTheirOrderAndBindsTheKey) {
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_generic_info(0xFFFFFFFF, &info_.record), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("query PCIs [" + std::string(kGenericColumns) +
                                               "] where FunKey=? with 3/0/1:4294967295"));
}

TEST_F(GenericInfo, EachColumnFillsTheFieldOfItsName) {
  Row row(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, "slot", 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26);
  answer({row});
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info_.record), ZYM_DB_STATUS_OK);
  const _ZYMDB_PCI_Generic& info = info_.record;
  EXPECT_THAT((std::vector<unsigned>{info._id, info.BridgeId, info.SegNo, info.BusNo, info.DeviceNo,
                                     info.FunctionNo, info.VendorId, info.DeviceId, info.RevId, info.ClsCode,
                                     info.SubVendorId, info.SubDeviceId, info.SlotNo, info.Location}),
              ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14));
  EXPECT_STREQ(info.SlotDesignation, "slot");
  EXPECT_THAT((std::vector<unsigned>{info.SlotType, info.SlotDataBusWidth, info.Hotplug, info.PCIType,
                                     info.BladeSlotPort, info.NodeIndex, info.FunType, info.LanesInUse,
                                     info.MaxLanes, info.MaxPCIeType, info.PCIeType}),
              ElementsAre(16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26));
}

TEST_F(GenericInfo, OfAnUnknownFunctionIsUntouchedAndNoFailure) {
  answer(std::vector<Row>{});
  answer(Answer{.end = kFailure});
  answer(Answer::without_result());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(zymdb_get_pci_generic_info(1, &info_.record), ZYM_DB_STATUS_OK);
  EXPECT_TRUE(info_.is_untouched());
}

TEST_F(GenericInfo, PassesAFailedQueryOn) {
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_pci_generic_info(1, &info_.record), kFailure);
  EXPECT_TRUE(info_.is_untouched());
}

TEST_F(GenericInfo, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_generic_info(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_generic_info(1, nullptr), ZYM_DB_STATUS_NO_DB);
}

TEST_F(GenericInfo, TheSingleDesignationIsReadOneCharacterLongerThanTheListed) {
  answer({Row()});
  answer({Row()});
  zymdb_get_pci_generic_info(1, &info_.record);
  EXPECT_THAT(client().calls, testing::Contains("text 14 size 65"));
  _ZYMDB_PCI_Generic_List list{};
  zymdb_get_pci_generic_info_list(&list, nullptr);
  std::free(list.items);
  EXPECT_THAT(client().calls, testing::Contains("text 14 size 64"));
}

class GenericInfoList : public scripted::ClientTest {
 protected:
  _ZYMDB_PCI_Generic own_{};
  _ZYMDB_PCI_Generic_List list_{5, &own_};
};

TEST_F(GenericInfoList, AsksForTheColumnsWithTheCallersFilter) {
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  zymdb_get_pci_generic_info_list(&list_, "BusNo=3");
  zymdb_get_pci_generic_info_list(&list_, nullptr);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [" + std::string(kGenericColumns) + "] where BusNo=3",
                          "query PCIs [" + std::string(kGenericColumns) + "] where NULL"));
}

TEST_F(GenericInfoList, WithoutRowsOnlyTheCountIsSet) {
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.items, &own_);
}

TEST_F(GenericInfoList, IsEmptyAfterAFailureAndUntouchedWithoutAResult) {
  const std::pair<Answer, int> cases[] = {{Answer::failing(kFailure), kFailure},
                                          {Answer::failing(kFailure, true), kFailure},
                                          {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY}};
  for (const auto& [failing, status] : cases) {
    list_ = {5, &own_};
    answer(failing);
    EXPECT_EQ(zymdb_get_pci_generic_info_list(&list_, nullptr), status);
    EXPECT_EQ(list_.count, 0u);
    EXPECT_EQ(list_.items, nullptr);
  }
  list_ = {5, &own_};
  answer(Answer::without_result());
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 5u);
}

TEST_F(GenericInfoList, WhateverEndsTheRowsWhatWasReadIsListed) {
  answer(Answer{.rows = {Row(1), Row(2)}, .end = kFailure, .row_count = 9});
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 2u);
  EXPECT_EQ(list_.items[1]._id, 2u);
  std::free(list_.items);
}

TEST_F(GenericInfoList, NeverMoreThanTheRowCountIsStored) {
  answer(Answer{.rows = {Row(1), Row(2), Row(3)}, .row_count = 2});
  EXPECT_EQ(zymdb_get_pci_generic_info_list(&list_, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 2u);
  std::free(list_.items);
}

TEST_F(GenericInfoList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_generic_info_list(nullptr, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_generic_info_list(nullptr, nullptr), ZYM_DB_STATUS_NO_DB);
}

class FunctionPlace : public scripted::ClientTest {
 protected:
  int look_up() { return zymdb::look_up_place(get_dmdb_handle(), 5, place_); }
  zymdb::FunctionPlace place_;
};

TEST_F(FunctionPlace, IsTheHardwareTypeAndTheLocation) {
  answer({Row(0x107, 0x100)});
  EXPECT_EQ(look_up(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("query PCIs [HardwareTypeId,Location] where FunKey=5"));
  EXPECT_EQ(place_.hardware_type, 7);
  EXPECT_EQ(place_.location, 0x100u);
}

TEST_F(FunctionPlace, UnreadableIsHardwareTypeThreeOnTheBoard) {
  answer({Row(nullptr, nullptr)});
  EXPECT_EQ(look_up(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(place_.hardware_type, 3);
  EXPECT_EQ(place_.location, 0u);
}

TEST_F(FunctionPlace, OfAnUnknownFunctionIsUntouched) {
  place_ = {9, 9};
  answer(std::vector<Row>{});
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(look_up(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(look_up(), kFailure);
  EXPECT_EQ(place_.hardware_type, 9);
  EXPECT_EQ(place_.location, 9u);
}

TEST_F(FunctionPlace, WithoutAHandleIsAWrongArgument) {
  EXPECT_EQ(zymdb::look_up_place(nullptr, 5, place_), ZYM_DB_STATUS_INVALID_PARAM);
}

class MiscInfo : public scripted::ClientTest {
 protected:
  Marked<_ZYMDB_PCI_Misc> misc_;
};

TEST_F(MiscInfo, LooksThePlaceUpOnlyForAMissingConnector) {
  answer({Row(16, "5", "9", "other", "1.0")});
  EXPECT_EQ(zymdb_get_pci_misc_info(-1, &misc_.record), ZYM_DB_STATUS_OK);
  answer({Row(16, "0", "9", "other", "1.0")});
  answer({Row(3, 1)});
  EXPECT_EQ(zymdb_get_pci_misc_info(4, &misc_.record), ZYM_DB_STATUS_OK);
  EXPECT_THAT(
      client().statements,
      ElementsAre(
          "query PCIMisc [MaxDataWidth,ConnectorLayout,PackageType,OtherPackageType,AIMSpecVersion] where "
          "PCIFuncKey=-1",
          "query PCIMisc [MaxDataWidth,ConnectorLayout,PackageType,OtherPackageType,AIMSpecVersion] where "
          "PCIFuncKey=4",
          "query PCIs [HardwareTypeId,Location] where FunKey=4"));
}

// What the place tells when the row does not: every kind of connector, place and hardware type.
struct MiscCase {
  const char* connector;  // null: unreadable
  const char* package;
  Answer place;  // of the lookup, when it runs
  bool looks_up;
  unsigned connector_code;
  const char* connector_name;
  unsigned package_code;
  const char* package_name;
};

TEST_F(MiscInfo, ConnectorAndPackageFollowFromThePlaceWhenTheyAreNotRecorded) {
  const Answer on_board = Answer::of({Row(0, 0)});
  const Answer in_slot = Answer::of({Row(0, 1)});
  const Answer in_bay = Answer::of({Row(0, 2)});
  const Answer elsewhere = Answer::of({Row(0, 5)});
  const Answer adapter_in_slot = Answer::of({Row(3, 1)});
  const Answer adapter_on_board = Answer::of({Row(3, 0)});
  const Answer unknown = Answer{};
  const Answer failing = Answer::failing(kFailure);
  const MiscCase cases[] = {
      {nullptr, nullptr, on_board, true, 32772, "Onboard", 32768, "Onboard"},
      {"0", "0", on_board, true, 32772, "Onboard", 32768, "Onboard"},
      {nullptr, nullptr, in_slot, true, 18, "PCI-E", 9, "Module/Card"},
      {nullptr, nullptr, in_bay, true, 0, "Unknown", 0, "Unknown"},
      {nullptr, nullptr, elsewhere, true, 0, "Unknown", 9, "Module/Card"},
      {nullptr, nullptr, adapter_in_slot, true, 18, "PCI-E", 0, "Unknown"},
      {nullptr, nullptr, adapter_on_board, true, 32772, "Onboard", 0, "Unknown"},
      {nullptr, nullptr, unknown, true, 0, "Unknown", 0, "Unknown"},
      {nullptr, nullptr, failing, true, 0, "Unknown", 0, "Unknown"},
      {nullptr, "14", on_board, true, 32772, "Onboard", 14, "Power Source/Generator"},
      {nullptr, "99", on_board, true, 32772, "Onboard", 99, "Unknown"},
      // The lookup has not run: the place is not known.
      {"5", nullptr, on_board, false, 5, "RJ45", 0, "Unknown"},
      {"5", "0", on_board, false, 5, "RJ45", 0, "Unknown"},
      {"5", "9", on_board, false, 5, "RJ45", 9, "Module/Card"},
      {"0x12", "0x8000", on_board, false, 18, "PCI-E", 32768, "Onboard"},
      {"18", "32768", on_board, false, 18, "PCI-E", 32768, "Onboard"},
      {"0x8005", "9", on_board, false, 32773, "ML2", 9, "Module/Card"},
      {"65541", "9", on_board, false, 5, "RJ45", 9, "Module/Card"},
  };
  for (const MiscCase& each : cases) {
    Row row(8);
    row.push_back(each.connector != nullptr ? Row::cell(each.connector) : Row::cell(nullptr));
    row.push_back(each.package != nullptr ? Row::cell(each.package) : Row::cell(nullptr));
    answer({row});
    if (each.looks_up) answer(each.place);
    EXPECT_EQ(zymdb_get_pci_misc_info(4, &misc_.record), ZYM_DB_STATUS_OK);
    EXPECT_EQ(misc_.record.ConnectorType, each.connector_code);
    EXPECT_STREQ(misc_.record.ConnectorTypeName, each.connector_name);
    EXPECT_EQ(misc_.record.PackageType, each.package_code);
    EXPECT_STREQ(misc_.record.PackageTypeName, each.package_name);
    EXPECT_THAT(client().answers, IsEmpty());
  }
}

TEST_F(MiscInfo, UnreadableColumnsAreZeroAndEmpty) {
  answer({Row(nullptr, "5", "9", nullptr, nullptr)});
  EXPECT_EQ(zymdb_get_pci_misc_info(4, &misc_.record), ZYM_DB_STATUS_OK);
  EXPECT_EQ(misc_.record.MaxDataWidth, 0);
  EXPECT_STREQ(misc_.record.OtherPackageType, "");
  EXPECT_STREQ(misc_.record.AIMSpecVersion, "");
}

TEST_F(MiscInfo, OfAnUnknownFunctionAnswersTheStepsCode) {
  const std::pair<Answer, int> cases[] = {{Answer{}, ZYM_DB_STATUS_DONE},
                                          {Answer{.end = kFailure}, kFailure},
                                          {Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), ZYM_DB_STATUS_OK}};
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_pci_misc_info(4, &misc_.record), status);
    EXPECT_TRUE(misc_.is_untouched());
  }
}

TEST_F(MiscInfo, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_misc_info(4, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_misc_info(4, nullptr), ZYM_DB_STATUS_NO_DB);
}

class VpdInfo : public scripted::ClientTest {
 protected:
  Marked<_ZYMDB_PCI_VPD> vpd_;
};

TEST_F(VpdInfo, IsFoundByTheHardwareOfTheFunction) {
  answer({Row(-1, 3)});
  answer({Row("uuid", "product", "maker", "serial", "part", "model", "fru")});
  EXPECT_EQ(zymdb_get_pci_vpd_info(5, &vpd_.record), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIs [HardwareId,HardwareTypeId] where FunKey=5",
                          "query VPDs [UUID,ProductName,Manufacture,SerialNo,PartNo,Model,FRUNo] where "
                          "HardwareId=-1 AND HardwareTypeId=3"));
  EXPECT_STREQ(vpd_.record.UUID, "uuid");
  EXPECT_STREQ(vpd_.record.ProductName, "product");
  EXPECT_STREQ(vpd_.record.Manufacture, "maker");
  EXPECT_STREQ(vpd_.record.SerialNo, "serial");
  EXPECT_STREQ(vpd_.record.PartNo, "part");
  EXPECT_STREQ(vpd_.record.Model, "model");
  EXPECT_STREQ(vpd_.record.FRUNo, "fru");
}

TEST_F(VpdInfo, UnreadableTextsAreEmpty) {
  answer({Row(1, 3)});
  answer({Row()});
  EXPECT_EQ(zymdb_get_pci_vpd_info(5, &vpd_.record), ZYM_DB_STATUS_OK);
  for (const char* text : {vpd_.record.UUID, vpd_.record.ProductName, vpd_.record.Manufacture,
                           vpd_.record.SerialNo, vpd_.record.PartNo, vpd_.record.Model, vpd_.record.FRUNo})
    EXPECT_STREQ(text, "");
}

TEST_F(VpdInfo, EveryFailureOfTheHardwareLookupIsAWrongArgument) {
  answer(std::vector<Row>{});
  answer(Answer::failing(kFailure));
  answer(Answer{.end = kFailure});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(zymdb_get_pci_vpd_info(5, &vpd_.record), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_TRUE(vpd_.is_untouched());
}

TEST_F(VpdInfo, WithoutDataTheRecordIsUntouchedAndThatIsNoFailure) {
  const std::pair<Answer, int> cases[] = {{Answer{}, ZYM_DB_STATUS_OK},
                                          {Answer::without_result(), ZYM_DB_STATUS_OK},
                                          {Answer::failing(kFailure, true), kFailure}};
  for (const auto& [each, status] : cases) {
    answer({Row(1, 3)});
    answer(each);
    EXPECT_EQ(zymdb_get_pci_vpd_info(5, &vpd_.record), status);
    EXPECT_TRUE(vpd_.is_untouched());
  }
}

TEST_F(VpdInfo, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_vpd_info(5, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_vpd_info(5, nullptr), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
