// The adapter list's exact calls, and what it answers to every failure of the client.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::Cell;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;

namespace {

constexpr int kFailure = 77;
constexpr char kColumns[] =
    "PCIKey,NodeNo,SlotNo,HealthStatus,ConnectorType,CardName,AIMSupported,Location,PCIFuncKey,count(*)";

class AdapterList : public scripted::ClientTest {
 protected:
  ~AdapterList() override { std::free(list_.adapters); }

  // A grouped row of an adapter in slot 3.
  static Row adapter(uint32_t key = 0x10003) {
    return Row(key, 0, 3, 1, "0xB6", "a card", 0, 1, 0x3B0000, 2);
  }
  static Row with(Row row, size_t column, Cell cell) {
    row[column] = std::move(cell);
    return row;
  }
  static Answer no_packages() { return Answer{}; }

  // Lists what the grouped query answers, and then the package ids.
  int list(Answer grouped, Answer packages = no_packages()) {
    answer(std::move(grouped));
    answer(std::move(packages));
    return zymdb_get_pci_adapter_list(&list_);
  }

  _ZYMDB_PCI_Adapter_List list_{5, nullptr};
};

TEST_F(AdapterList, AsksOnceForAllAdaptersAndOnceForAllPackageIds) {
  EXPECT_EQ(list(Answer::of({adapter(), adapter(0x10004)})), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 2u);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCIAdapter [" + std::string(kColumns) + "] where 1 GROUP BY PCIKey",
                          "query NCSIPackageID [SlotNo,Location,PackageID1,PackageID2] where NULL"));
}

TEST_F(AdapterList, ColumnsAreReadInTheWidthOfTheirField) {
  list(Answer::of({adapter()}));
  std::vector<std::string> reads;
  for (const std::string& call : client().calls)
    if (call.starts_with("u") || call.starts_with("short") || call.starts_with("text") ||
        call.starts_with("is_null"))
      reads.push_back(call);
  EXPECT_THAT(reads,
              ElementsAre("uint 0", "short_uint 1", "short_uint 2", "uchar 3", "is_null 4", "text 4 size 6",
                          "text 5 size 129", "uchar 6", "uchar 7", "uint 8", "uint 9"));
}

TEST_F(AdapterList, ARowWithAnyUnreadableColumnIsLeftOut) {
  for (size_t column : {0, 1, 2, 3, 5, 6, 7, 8, 9}) {
    EXPECT_EQ(list(Answer::of({with(adapter(), column, nullptr), adapter(9)})), ZYM_DB_STATUS_OK);
    EXPECT_EQ(list_.count, 1u) << column;
    EXPECT_EQ(list_.adapters[0].PCIKey, 9u);
    std::free(list_.adapters);
    list_.adapters = nullptr;
  }
}

TEST_F(AdapterList, AFailedTestOrReadOfTheConnectorLeavesTheRowOut) {
  client().failures[{"is_null", 0}] = kFailure;
  EXPECT_EQ(list(Answer::of({adapter()})), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
  std::free(list_.adapters);
  EXPECT_EQ(list(Answer::of({with(adapter(), 4, int64_t{5})})), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 0u);
}

TEST_F(AdapterList, FailuresLeaveItEmpty) {
  const std::pair<Answer, int> cases[] = {{Answer::failing(kFailure), kFailure},
                                          {Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), ZYM_DB_STATUS_OK},
                                          {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY}};
  for (const auto& [failing, status] : cases) {
    _ZYMDB_PCI_Adapter own{};
    _ZYMDB_PCI_Adapter_List list{5, &own};
    answer(failing);
    EXPECT_EQ(zymdb_get_pci_adapter_list(&list), status);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.adapters, nullptr);
  }
}

TEST_F(AdapterList, AFailedStepFreesWhatWasRead) {
  EXPECT_EQ(
      list(Answer{.rows = {adapter()}, .end = kFailure, .row_count = 3}, Answer::of({Row(3, 1, 10, 11)})),
      kFailure);
  EXPECT_EQ(list_.count, 0u);
  EXPECT_EQ(list_.adapters, nullptr);
}

TEST_F(AdapterList, NeverMoreThanTheRowCountIsStored) {
  EXPECT_EQ(list(Answer{.rows = {adapter(1), adapter(2)}, .row_count = 1}), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  EXPECT_EQ(list_.adapters[0].PCIKey, 1u);
}

TEST_F(AdapterList, AFailureOfThePackageIdsOnlyCostsTheIds) {
  EXPECT_EQ(list(Answer::of({adapter()}), Answer::failing(kFailure)), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  EXPECT_EQ(list_.adapters[0].NcsiIdValid, 0);
  EXPECT_EQ(list_.adapters[0].PackageID1, 0xFF);
  EXPECT_EQ(list_.adapters[0].PackageID2, 0xFF);
}

TEST_F(AdapterList, AMergedRowAsksForAManagedFunctionOfItsAdapter) {
  answer(Answer::of({with(adapter(0xFFFFFFFF), 6, int64_t{3})}));
  answer(no_packages());
  answer({adapter()});
  EXPECT_EQ(zymdb_get_pci_adapter_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.back(),
            "query PCIAdapter [" + std::string(kColumns) + "] where PCIKey=-1 AND AIMSupported=1");
  EXPECT_EQ(list_.adapters[0].AIMSupported, 1);
}

TEST_F(AdapterList, AMergedRowStaysMergedWhenThatFindsNothingOrFails) {
  for (const Answer& second : {Answer{}, Answer::failing(kFailure, true), Answer::without_result()}) {
    answer(Answer::of({with(adapter(), 6, int64_t{3})}));
    answer(no_packages());
    answer(second);
    EXPECT_EQ(zymdb_get_pci_adapter_list(&list_), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.count, 1u);
    EXPECT_EQ(list_.adapters[0].AIMSupported, 3);
    std::free(list_.adapters);
    list_.adapters = nullptr;
  }
}

TEST_F(AdapterList, TheFirstPackageIdsOfASlotAreItsOwn) {
  EXPECT_EQ(list(Answer::of({adapter()}),
                 Answer::of({Row(3, 0, 1, 2), Row(4, 1, 3, 4), Row(3, 1, 5, 6), Row(3, 1, 7, 8)})),
            ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.adapters[0].NcsiIdValid, 1);
  EXPECT_EQ(list_.adapters[0].PackageID1, 5);
  EXPECT_EQ(list_.adapters[0].PackageID2, 6);
}

struct ConnectorCase {
  int aim;
  int location;
  Cell code;
  std::optional<Answer> place;  // of the lookup, where there is one
  unsigned connector;
  const char* name;
};

TEST_F(AdapterList, ConnectorsAreNamedByTheFirstRuleThatApplies) {
  const ConnectorCase cases[] = {
      // Managed out of band: the connector type table, and the place where the adapter tells no code.
      {1, 1, "19", {}, 19, "PCI-E x1"},
      {1, 0, "19", {}, 19, "PCI-E x1"},
      {1, 1, "0x8005", {}, 0x8005, "ML2"},
      {1, 1, "1", {}, 1, "Unknown"},
      {1, 1, nullptr, Answer::of({Row(3, 0)}), 0x8004, "Onboard"},
      {1, 1, nullptr, Answer::of({Row(3, 1)}), 0x12, "PCI-E"},
      {1, 0, "0", Answer::of({Row(3, 1)}), 0x12, "PCI-E"},
      {1, 1, "0", Answer::of({Row(3, 2)}), 0, "Unknown"},
      {1, 1, "0", Answer{}, 0, "Unknown"},
      {1, 1, "0", Answer::failing(kFailure), 0, "Unknown"},
      // On the board: always so named.
      {0, 0, nullptr, {}, 0x8004, "Onboard"},
      {0, 0, "0xB6", {}, 0x8004, "Onboard"},
      {2, 0, "7", {}, 0x8004, "Onboard"},
      // Elsewhere: the slot type table.
      {0, 1, "0xB6", {}, 0xB6, "PCI-E Gen 3 x16"},
      {0, 1, "182", {}, 0xB6, "PCI-E Gen 3 x16"},
      {0, 1, "0266", {}, 0xB6, "PCI-E Gen 3 x16"},
      {0, 1, "183", {}, 183, "Unknown"},
      {0, 1, nullptr, {}, 0, "Unknown"},
      {2, 1, "0x12", {}, 0x12, "PCI-X"},
      {0, 2, "0x8004", {}, 0x8004, "Unknown"},
  };
  for (const ConnectorCase& each : cases) {
    Row row = with(with(with(adapter(), 6, int64_t{each.aim}), 7, int64_t{each.location}), 4, each.code);
    answer({row});
    answer(no_packages());
    if (each.place) answer(*each.place);
    EXPECT_EQ(zymdb_get_pci_adapter_list(&list_), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.count, 1u);
    EXPECT_EQ(list_.adapters[0].ConnectorType, each.connector);
    EXPECT_STREQ(list_.adapters[0].ConnectorTypeName, each.name);
    EXPECT_TRUE(client().answers.empty());
    std::free(list_.adapters);
    list_.adapters = nullptr;
  }
}

constexpr char kCombined[] = "Broadcom 57416 10GBASE-T 2-port + 5720 1GbE 2-port OCP Ethernet Adapter";

// A generic record of a function with these ids; all the other columns unreadable.
Answer function(int device, int subdevice) {
  Row row;
  row.resize(26, nullptr);
  row[7] = int64_t{device};
  row[11] = int64_t{subdevice};
  return Answer::of({row});
}

TEST_F(AdapterList, TheTwoChipCardHasAnNameOfItsOwn) {
  struct Case {
    const char* name;
    int functions;
    std::optional<Answer> generic;
    const char* shown;
  } const cases[] = {
      {"Broadcom 5720 OCP", 4, function(0x165F, 0x4106), kCombined},
      {"Broadcom 57416 OCP", 4, function(0x16D8, 0x4163), kCombined},
      {"Broadcom 57416 OCP", 4, function(0x16D8, 0x4106), "Broadcom 57416 OCP"},
      {"Broadcom 57416 OCP", 4, function(0x165F, 0x4163), "Broadcom 57416 OCP"},
      {"Broadcom 57416 OCP", 4, Answer{}, "Broadcom 57416 OCP"},
      {"Broadcom 57416 OCP", 4, Answer::failing(kFailure), "Broadcom 57416 OCP"},
      {"Broadcom 57416 OCP", 3, {}, "Broadcom 57416 OCP"},
      {"Broadcom 57416 OCP", 5, {}, "Broadcom 57416 OCP"},
      {"Broadcom 57416", 4, {}, "Broadcom 57416"},
      {"A Broadcom 57 OCP", 4, {}, "A Broadcom 57 OCP"},
      {"broadcom 57416 OCP", 4, {}, "broadcom 57416 OCP"},
  };
  for (const Case& each : cases) {
    answer({with(with(adapter(), 5, each.name), 9, int64_t{each.functions})});
    answer(no_packages());
    if (each.generic) answer(*each.generic);
    EXPECT_EQ(zymdb_get_pci_adapter_list(&list_), ZYM_DB_STATUS_OK);
    ASSERT_EQ(list_.count, 1u);
    EXPECT_STREQ(list_.adapters[0].CardName, each.shown);
    EXPECT_TRUE(client().answers.empty()) << each.name;
    std::free(list_.adapters);
    list_.adapters = nullptr;
  }
}

TEST_F(AdapterList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_pci_adapter_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_pci_adapter_list(nullptr), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
