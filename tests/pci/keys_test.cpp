// Keys and single-function lookups on the embedded database.
#include <gmock/gmock.h>

#include "support/inventory.h"
#include "zymdb_pci.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using Keys = std::vector<uint32_t>;

class PciKeys : public InventoryTest {
 protected:
  // Two cards in slots, the first of them a DPU with two functions, and a device on the board.
  static void given_machine() {
    given("PCIs", {{"FunKey", 0x3B0000},
                   {"DevKey", 0x10003},
                   {"Location", 1},
                   {"SlotNo", 3},
                   {"VendorId", 0x15B3},
                   {"DeviceId", 0xA2D6},
                   {"SubVendorId", 0x15B3},
                   {"SubDeviceId", 0x58},
                   {"HardwareId", 0x3B0000},
                   {"HardwareTypeId", 3},
                   {"FunType", 15}});
    given("PCIs", {{"FunKey", 0x3B0001},
                   {"DevKey", 0x10003},
                   {"Location", 1},
                   {"SlotNo", 3},
                   {"VendorId", 0x15B3},
                   {"DeviceId", 0xA2D6}});
    given("PCIs",
          {{"FunKey", 0x5E0000}, {"DevKey", 0x10004}, {"Location", 1}, {"SlotNo", 4}, {"VendorId", 0x8086}});
    given("PCIs", {{"FunKey", 0x50000}, {"DevKey", 0x50000}, {"Location", 0}, {"SlotNo", 0}});
  }
  template <class List>
  static Keys taken(List& list) {
    Keys keys(list.keys, list.keys + list.count);
    std::free(list.keys);
    return keys;
  }
  static std::pair<int, Keys> keys(const char* filter) {
    _ZYMDB_PCI_Key_List list{};
    const int status = zymdb_get_pci_keys(&list, filter);
    return {status, taken(list)};
  }
  static std::pair<int, Keys> functions(std::string filter) {
    _ZYMDB_PCI_FunKey_List list{};
    const int status = zymdb_get_pci_funkey_list_by_filter(filter.data(), &list);
    return {status, taken(list)};
  }
  static std::pair<int, Keys> functions_of(int pci_key) {
    _ZYMDB_PCI_FunKey_List list{};
    const int status = zymdb_get_pci_funkey_list(pci_key, &list);
    return {status, taken(list)};
  }
};

TEST_F(PciKeys, OfAnEmptyTableAreNoneAndTheArrayIsAsTheCallerLeftIt) {
  uint32_t own = 0;
  _ZYMDB_PCI_Key_List list{5, &own};
  EXPECT_EQ(zymdb_get_pci_keys(&list, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list.count, 0u);
  EXPECT_EQ(list.keys, &own);
}

TEST_F(PciKeys, AreListedOncePerDevice) {
  given_machine();
  EXPECT_THAT(keys(nullptr), Pair(ZYM_DB_STATUS_OK, ElementsAre(0x10003, 0x10004, 0x50000)));
  EXPECT_THAT(keys("Location=1"), Pair(ZYM_DB_STATUS_OK, ElementsAre(0x10003, 0x10004)));
  EXPECT_THAT(keys("Location=7"), Pair(ZYM_DB_STATUS_OK, IsEmpty()));
}

TEST_F(PciKeys, ComeWithAFilterOf112CharactersAndNotWithALongerOne) {
  given_machine();
  const auto distinct = Pair(ZYM_DB_STATUS_OK, ElementsAre(0x10003, 0x10004));
  EXPECT_THAT(keys((std::string(102, ' ') + "Location=1").c_str()), distinct);
  for (const size_t blanks : {104, 110, 118, 119, 130})
    EXPECT_THAT(keys((std::string(blanks, ' ') + "Location=1").c_str()), testing::Not(distinct)) << blanks;
}

TEST_F(PciKeys, ThatAreNullAreListedAsZero) {
  given("PCIs", {{"FunKey", 1}});
  EXPECT_THAT(keys(nullptr), Pair(ZYM_DB_STATUS_OK, ElementsAre(0)));
}

TEST_F(PciKeys, OfDpusAreThoseOfTheirVendorAndDevice) {
  given_machine();
  _ZYMDB_PCI_Key_List list{};
  EXPECT_EQ(zymdb_get_dpu_keys(&list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(taken(list), ElementsAre(0x10003));
}

TEST_F(PciKeys, ABrokenFilterIsAFailure) {
  EXPECT_NE(keys("Location=(").first, ZYM_DB_STATUS_OK);
  EXPECT_NE(functions("Location=(").first, ZYM_DB_STATUS_OK);
}

TEST_F(PciKeys, FunctionsAreListedByFilterAndBySlot) {
  given_machine();
  EXPECT_THAT(functions("VendorId=5555"), Pair(ZYM_DB_STATUS_OK, ElementsAre(0x3B0000, 0x3B0001)));
  _ZYMDB_PCI_FunKey_List list{};
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(1, 4, &list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(taken(list), ElementsAre(0x5E0000));
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_slot(1, 9, &list), ZYM_DB_STATUS_OK);
  EXPECT_THAT(taken(list), IsEmpty());
}

TEST_F(PciKeys, AMissingFilterReadsAsAMissingDatabaseThoughThereIsOne) {
  _ZYMDB_PCI_FunKey_List list{};
  EXPECT_EQ(zymdb_get_pci_funkey_list_by_filter(nullptr, &list), ZYM_DB_STATUS_NO_DB);
}

TEST_F(PciKeys, FunctionsOfAnUnmanagedDeviceAreTheFirstAlone) {
  given_machine();
  for (uint32_t funkey : {0x3B0000, 0x3B0001})
    given("PCIAdapter", {{"PCIKey", 0x10003}, {"PCIFuncKey", funkey}, {"AIMSupported", 0}});
  EXPECT_THAT(functions_of(0x10003), Pair(ZYM_DB_STATUS_OK, ElementsAre(0x3B0000)));
}

TEST_F(PciKeys, AnUnmanagedDeviceWhoseFunctionSitsElsewhereHasNone) {
  given_machine();
  given("PCIAdapter", {{"PCIKey", 0x10003}, {"PCIFuncKey", 0x5E0000}, {"AIMSupported", 0}});
  EXPECT_THAT(functions_of(0x10003), Pair(ZYM_DB_STATUS_OK, IsEmpty()));
}

TEST_F(PciKeys, FunctionsOfAManagedDeviceAreThoseOfItsAdapterOnceEach) {
  for (int type : {1, 2, 3}) {
    const int key = 100 + type;
    for (int funkey : {5, 6, 5})
      given("PCIAdapter", {{"PCIKey", key}, {"PCIFuncKey", funkey}, {"AIMSupported", type}});
    EXPECT_THAT(functions_of(key), Pair(ZYM_DB_STATUS_OK, ElementsAre(5, 6)));
  }
}

TEST_F(PciKeys, ADeviceWithoutAdapterRowsAnswersThatThereAreNoMore) {
  given_machine();
  EXPECT_THAT(functions_of(0x10003), Pair(ZYM_DB_STATUS_DONE, IsEmpty()));
}

TEST_F(PciKeys, AnAdapterOfUnknownManagementIsAFailure) {
  given("PCIAdapter", {{"PCIKey", 7}, {"PCIFuncKey", 5}});
  EXPECT_THAT(functions_of(7), Pair(ZYM_DB_STATUS_ERROR, IsEmpty()));
}

TEST_F(PciKeys, SingleFunctionLookupsReadTheirColumn) {
  given_machine();
  given("PCIAdapter", {{"PCIFuncKey", 0x3B0000}, {"CardName", "BlueField-2"}, {"AIMSupported", 1}});
  unsigned value = 0;
  EXPECT_EQ(zymdb_get_pci_function_type(0x3B0000, &value), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value, 15u);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(0x3B0000, &value), ZYM_DB_STATUS_OK);
  EXPECT_EQ(value, 1u);
  char name[10];
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(0x3B0000, name, sizeof name), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(name, "BlueField");
  unsigned hardware_id = 0;
  unsigned char hardware_type = 0;
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(0x3B0000, &hardware_id, &hardware_type), ZYM_DB_STATUS_OK);
  EXPECT_EQ(hardware_id, 0x3B0000u);
  EXPECT_EQ(hardware_type, 3);
  unsigned short ids[4] = {};
  EXPECT_EQ(zymdb_get_pci_id_by_funkey(0x3B0000, &ids[0], &ids[1], &ids[2], &ids[3]), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids, ElementsAre(0x15B3, 0xA2D6, 0x15B3, 0x58));
}

TEST_F(PciKeys, SingleFunctionLookupsOfAnUnknownFunctionKeepTheirPresets) {
  unsigned value = 0;
  EXPECT_EQ(zymdb_get_pci_function_type(99, &value), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(value, 23u);
  EXPECT_EQ(zymdb_get_pci_function_oob_type(99, &value), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(value, 0u);
  char name[4] = "old";
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(99, name, sizeof name), ZYM_DB_STATUS_DONE);
  EXPECT_EQ(zymdb_get_pci_cardname_by_funkey(99, name, 0), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_STREQ(name, "old");
  unsigned short ids[4] = {1, 2, 3, 4};
  EXPECT_EQ(zymdb_get_pci_id_by_funkey(99, &ids[0], &ids[1], &ids[2], &ids[3]), ZYM_DB_STATUS_OK);
  EXPECT_THAT(ids, ElementsAre(1, 2, 3, 4));
}

TEST_F(PciKeys, KeysFromTwoToTheThirtyOneMatchOnlyWhereTheyAreBound) {
  given("PCIs", {{"FunKey", 0x80000000}, {"FunType", 4}, {"HardwareId", 1}, {"HardwareTypeId", 3}});
  unsigned value = 0;
  EXPECT_EQ(zymdb_get_pci_function_type(0x80000000, &value), ZYM_DB_STATUS_OK);
  unsigned char type = 0;
  EXPECT_EQ(zymdb_get_pci_hardwareidtype_by_funkey(0x80000000, &value, &type), ZYM_DB_STATUS_DONE);
}

}  // namespace
