// Physical ports: exact calls in their order, and what every failure of the client answers.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_network.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class PhysicalPorts : public scripted::ClientTest {
 protected:
  ~PhysicalPorts() override { std::free(list_.ports); }

  static Row port(int index, const char* layout = "0x8005") {
    return Row(layout, index, 1, "3C:FD:FE:00:00:0" + std::to_string(index));
  }
  static Row state(int status, int speed = 25000, int tx = 1, int rx = 2) {
    return Row(status, speed, tx, rx);
  }
  int list() { return zymdb_get_all_network_physical_port_list(12, &list_); }
  std::vector<int> indices() const {
    std::vector<int> indices;
    for (uint32_t i = 0; i < list_.count; ++i) indices.push_back(list_.ports[i].Idx);
    return indices;
  }
  std::vector<unsigned> states() const {
    std::vector<unsigned> states;
    for (uint32_t i = 0; i < list_.count; ++i) states.push_back(list_.ports[i].LinkStatus);
    return states;
  }
  void expect_empty() const {
    EXPECT_EQ(list_.count, 0u);
    EXPECT_EQ(list_.ports, nullptr);
  }

  _ZYMDB_PCI_PhysicalPort_List list_{5, nullptr};
};

TEST_F(PhysicalPorts, AreReadFunctionByFunction) {
  answer({Row(100, 1), Row(101, 1)});
  answer({port(0)});
  answer({state(1)});
  answer({port(1)});
  answer({state(2)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(indices(), ElementsAre(0, 1));
  EXPECT_THAT(states(), ElementsAre(1, 2));
  const std::string ports =
      "query PCIPhysicalPort [ConnectorLayout,Idx,NumberofLogicalPorts,PermanentAddress] where PCIFuncKey=";
  const std::string states =
      "query PCIPhysicalPortStat [LinkStatus,LinkSpeed,TxUtil,RxUtil] where PCIFuncKey=";
  EXPECT_THAT(client().statements,
              ElementsAre("query PCINetwork [PCIFuncKey,NumberofPhysicalPorts] where PCIKey=12",
                          ports + "100", states + "100", ports + "101", states + "101"));
}

TEST_F(PhysicalPorts, OfOneFunctionAreLookedForByItsKey) {
  answer({Row(12, 1)});
  answer({port(0)});
  answer({state(1)});
  EXPECT_EQ(zymdb_get_network_physical_port_list(12, &list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.front(),
            "query PCINetwork [PCIFuncKey,NumberofPhysicalPorts] where PCIFuncKey=12");
}

TEST_F(PhysicalPorts, KeysAreWrittenAsSignedNumbers) {
  answer({Row(0xFFFFFFFE, 1)});
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_get_network_physical_port_list(0xFFFFFFFF, &list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.front(), testing::EndsWith("where PCIFuncKey=-1"));
  EXPECT_THAT(client().statements.back(), testing::EndsWith("where PCIFuncKey=-2"));
}

TEST_F(PhysicalPorts, EveryColumnFillsItsField) {
  answer({Row(100, 1)});
  answer({port(3)});
  answer({state(1, 100000, 7, 8)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_PCI_PhysicalPort& port = list_.ports[0];
  EXPECT_EQ(port.ConnectorLayout, 0x8005);
  EXPECT_STREQ(port.ConnectorLayoutName, "SFP+");
  EXPECT_EQ(port.Idx, 3);
  EXPECT_EQ(port.NumberofLogicalPorts, 1);
  EXPECT_STREQ(port.PermanentAddress, "3C:FD:FE:00:00:03");
  EXPECT_EQ(port.LinkStatus, 1u);
  EXPECT_EQ(port.LinkSpeed, 100000u);
  EXPECT_EQ(port.TxUtil, 7u);
  EXPECT_EQ(port.RxUtil, 8u);
  EXPECT_THAT(client().calls, testing::IsSupersetOf({"text 0 size 6", "text 3 size 65"}));
}

TEST_F(PhysicalPorts, UnreadableColumnsTakeTheirDefaults) {
  answer({Row(nullptr, 1)});
  answer({Row(nullptr, nullptr, nullptr, nullptr)});
  answer({Row(nullptr, nullptr, nullptr, nullptr)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.back(), testing::EndsWith("where PCIFuncKey=0"));
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_PCI_PhysicalPort& port = list_.ports[0];
  EXPECT_EQ(port.ConnectorLayout | port.Idx | port.NumberofLogicalPorts, 0);
  EXPECT_STREQ(port.ConnectorLayoutName, "Unknown");
  EXPECT_STREQ(port.PermanentAddress, "");
  EXPECT_EQ(port.LinkStatus | port.LinkSpeed | port.TxUtil | port.RxUtil, 0u);
}

TEST_F(PhysicalPorts, WithoutAnyPortThereIsNoList) {
  for (const auto& rows : {std::vector<Row>{}, {Row(100, 0), Row(101, nullptr)}}) {
    answer(rows);
    EXPECT_EQ(list(), ZYM_DB_STATUS_NOT_FOUND);
    expect_empty();
  }
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(PhysicalPorts, AFunctionWithSeveralRowsIsListedOnce) {
  answer({Row(100, 2), Row(101, 1), Row(100, 2)});
  answer({port(0), port(1)});
  answer({state(1), state(1)});
  answer({port(2)});
  answer({state(2)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(indices(), ElementsAre(0, 1, 2));
  // The array has room for the ports of every row.
  EXPECT_EQ(list_.ports[4].Idx, 0);
  EXPECT_STREQ(list_.ports[4].PermanentAddress, "");
}

TEST_F(PhysicalPorts, OnlyFourteenRowsCount) {
  std::vector<Row> functions;
  for (int function = 0; function < 16; ++function) functions.push_back(Row(100 + function, 1));
  answer(functions);
  for (int function = 0; function < 14; ++function) {
    answer({port(function % 10), port(function % 10)});
    answer({state(1)});
  }
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 14u);
  EXPECT_THAT(client().statements.back(), testing::EndsWith("where PCIFuncKey=113"));
  EXPECT_TRUE(client().answers.empty());
}

TEST_F(PhysicalPorts, AreNeverMoreThanTheFunctionsSumUpTo) {
  answer({Row(100, 1)});
  answer({port(0), port(1)});
  answer({state(1), state(2)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(indices(), ElementsAre(0));
  EXPECT_THAT(states(), ElementsAre(1));
}

TEST_F(PhysicalPorts, StatesJoinThemByPositionAcrossFunctions) {
  answer({Row(100, 2), Row(101, 2)});
  answer({port(0), port(1)});
  answer({state(1)});
  answer({port(0), port(1)});
  answer({state(2), state(3)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(states(), ElementsAre(1, 2, 3, 0));
}

TEST_F(PhysicalPorts, WithoutAStateRowHaveStateZero) {
  answer({Row(100, 1)});
  answer({port(0)});
  answer(std::vector<Row>{});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_PCI_PhysicalPort& port = list_.ports[0];
  EXPECT_EQ(port.LinkStatus | port.LinkSpeed | port.TxUtil | port.RxUtil, 0u);
}

TEST_F(PhysicalPorts, AFailedQueryLeavesTheListEmpty) {
  const std::pair<Answer, int> cases[] = {{Answer::failing(kFailure), kFailure},
                                          {Answer::failing(kFailure, true), kFailure},
                                          {Answer::without_result(), ZYM_DB_STATUS_OK}};
  const Answer succeeding[] = {Answer::of({Row(100, 1), Row(101, 1)}), Answer::of({port(0)}),
                               Answer::of({state(1)}), Answer::of({port(1)}), Answer::of({state(2)})};
  for (size_t failing = 0; failing < std::size(succeeding); ++failing) {
    for (const auto& [each, status] : cases) {
      for (size_t query = 0; query < failing; ++query) answer(succeeding[query]);
      answer(each);
      _ZYMDB_PCI_PhysicalPort own{};
      list_ = {5, &own};
      EXPECT_EQ(list(), status) << "query " << failing;
      expect_empty();
      EXPECT_TRUE(client().answers.empty());
    }
  }
}

TEST_F(PhysicalPorts, AFailedStepThroughPortsLeavesTheListEmpty) {
  answer({Row(100, 2)});
  answer(Answer{.rows = {port(0)}, .end = kFailure});
  EXPECT_EQ(list(), kFailure);
  expect_empty();
}

TEST_F(PhysicalPorts, AFailedStepThroughFunctionsOrStatesKeepsWhatWasRead) {
  answer(Answer{.rows = {Row(100, 2)}, .end = kFailure});
  answer({port(0), port(1)});
  answer(Answer{.rows = {state(1)}, .end = kFailure});
  EXPECT_EQ(list(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(states(), ElementsAre(1, 0));
}

TEST_F(PhysicalPorts, WithoutMemoryThereIsNoList) {
  answer({Row(100, 0xFFFFFFFF)});
  EXPECT_EQ(list(), ZYM_DB_STATUS_NO_MEMORY);
  expect_empty();
}

TEST_F(PhysicalPorts, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_network_physical_port_list(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_all_network_physical_port_list(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_network_physical_port_list(1, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_all_network_physical_port_list(1, nullptr), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(list_.count, 5u);
}

}  // namespace
