// Port counts and logical ports: exact calls, and what every failure of the client answers.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_network.h"

using scripted::Answer;
using scripted::Cell;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class NetworkInfo : public scripted::ClientTest {
 protected:
  _ZYMDB_PCI_Network_Info info_{99, 98};
};

TEST_F(NetworkInfo, IsSummedByTheDatabase) {
  answer({Row(4, 64)});
  EXPECT_EQ(zymdb_get_network_info(0x3B0001, &info_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info_.NumberofPhysicalPorts, 4);
  EXPECT_EQ(info_.MaxNumberofLogicalPorts, 64);
  EXPECT_THAT(client().statements,
              ElementsAre("query PCINetwork [sum(NumberofPhysicalPorts),sum(MaxNumberofLogicalPorts)] where "
                          "PCIFuncKey=3866625"));
}

TEST_F(NetworkInfo, ATopmostKeyIsWrittenAsANegativeNumber) {
  answer({Row(1, 1)});
  EXPECT_EQ(zymdb_get_network_info(0xFFFFFFFF, &info_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.back(), testing::EndsWith("where PCIFuncKey=-1"));
}

TEST_F(NetworkInfo, SumsAreCutToTheirFields) {
  answer({Row(0x102, 0x10003)});
  EXPECT_EQ(zymdb_get_network_info(1, &info_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info_.NumberofPhysicalPorts, 2);
  EXPECT_EQ(info_.MaxNumberofLogicalPorts, 3);
}

TEST_F(NetworkInfo, ASumThatCannotBeReadIsZero) {
  answer({Row(nullptr, 7)});
  EXPECT_EQ(zymdb_get_network_info(1, &info_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(info_.NumberofPhysicalPorts, 0);
  EXPECT_EQ(info_.MaxNumberofLogicalPorts, 7);
}

TEST_F(NetworkInfo, FailuresLeaveTheOutputUntouched) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), kFailure},        {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK}, {Answer{}, ZYM_DB_STATUS_DONE},
      {Answer{.end = kFailure}, kFailure},
  };
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_network_info(1, &info_), status);
    EXPECT_EQ(info_.NumberofPhysicalPorts, 99);
    EXPECT_EQ(info_.MaxNumberofLogicalPorts, 98);
  }
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(NetworkInfo, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_network_info(1, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_network_info(1, nullptr), ZYM_DB_STATUS_NO_DB);
}

constexpr char kColumns[] =
    "MaxDataSize,PermanentAddress,NetworkAddresses,PhyIdx,Idx,LinkTechnology,vNICMode,MaxSpeed,ProtocolType,"
    "Ethernet,FCoEFC,iSCSI,FCoEPermanentAddress,FCoENetworkAddressess,ConnectionType,Role,"
    "TargetRelativePortNumber";
constexpr size_t kAddress = 1;
constexpr size_t kVnicMode = 6;
constexpr size_t kColumnCount = 17;

class LogicalPorts : public scripted::ClientTest {
 protected:
  ~LogicalPorts() override { std::free(list_.ports); }

  static Row port(const char* address = "3C:FD:FE:00:00:01") {
    return Row(9000, address, "3C:FD:FE:00:00:02", 1, 2, "2", "1", int64_t{100'000'000'000}, 6, 1, 2, 3,
               "2000001B21000001", "2000001B21000002", "7", "4", 5);
  }
  static Row with(Row row, size_t column, Cell cell) {
    row[column] = std::move(cell);
    return row;
  }
  int list(Answer rows) {
    answer(std::move(rows));
    return zymdb_get_network_logical_port_list(12, &list_);
  }
  void expect_empty() const {
    EXPECT_EQ(list_.count, 0u);
    EXPECT_EQ(list_.ports, nullptr);
  }

  _ZYMDB_PCI_LogicalPort_List list_{5, nullptr};
};

TEST_F(LogicalPorts, TheThreeListsDifferInTheirFilterOnly) {
  const auto filter = [&](auto read) {
    answer({port()});
    EXPECT_EQ(read(), ZYM_DB_STATUS_OK);
    std::free(list_.ports);
    list_ = {};
    const std::string prefix = std::string("query PCILogicalPort [") + kColumns + "] where ";
    EXPECT_THAT(client().statements.back(), testing::StartsWith(prefix));
    return client().statements.back().substr(prefix.size());
  };
  EXPECT_EQ(filter([&] { return zymdb_get_network_logical_port_list(12, &list_); }), "PCIFuncKey=12");
  EXPECT_EQ(filter([&] { return zymdb_get_network_logical_port_list2(12, 255, &list_); }), "PCIFuncKey=12");
  EXPECT_EQ(filter([&] { return zymdb_get_network_logical_port_list2(12, 0, &list_); }),
            "PCIFuncKey=12 AND PhyIdx=0");
  EXPECT_EQ(filter([&] { return zymdb_get_network_logical_port_list2(12, 256, &list_); }),
            "PCIFuncKey=12 AND PhyIdx=256");
  EXPECT_EQ(filter([&] { return zymdb_get_network_logical_port_list2(0x80000000, 0xFFFFFFFF, &list_); }),
            "PCIFuncKey=-2147483648 AND PhyIdx=-1");
  EXPECT_EQ(filter([&] { return zymdb_get_all_network_logical_port_list(12, &list_); }), "PCIKey=12");
  EXPECT_EQ(filter([&] { return zymdb_get_all_network_logical_port_list(0xFFFFFFFF, &list_); }), "PCIKey=-1");
}

TEST_F(LogicalPorts, EveryColumnFillsItsField) {
  EXPECT_EQ(list(Answer::of({port()})), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_PCI_LogicalPort& port = list_.ports[0];
  EXPECT_EQ(port.MaxDataSize, 9000u);
  EXPECT_STREQ(port.PermanentAddress, "3C:FD:FE:00:00:01");
  EXPECT_STREQ(port.NetworkAddresses, "3C:FD:FE:00:00:02");
  EXPECT_EQ(port.PhyIdx, 1);
  EXPECT_EQ(port.Idx, 2);
  EXPECT_EQ(port.LinkTechnology, 2);
  EXPECT_EQ(port.vNICMode, 1);
  EXPECT_EQ(port.MaxSpeed, 100'000'000'000u);
  EXPECT_EQ(port.ProtocolType, 6);
  EXPECT_EQ(port.Ethernet, 1);
  EXPECT_EQ(port.FCoEFC, 2);
  EXPECT_EQ(port.iSCSI, 3);
  EXPECT_STREQ(port.FCoEPermanentAddress, "2000001B21000001");
  EXPECT_STREQ(port.FCoENetworkAddressess, "2000001B21000002");
  EXPECT_EQ(port.ConnectionType, 7);
  EXPECT_EQ(port.Role, 4);
  EXPECT_EQ(port.TargetRelativePortNumber, 5u);
  EXPECT_STREQ(port.LinkTechnologyName, "Ethernet");
  EXPECT_STREQ(port.vNICModeName, "Vot Virtual Fabric mode");
  EXPECT_STREQ(port.ProtocolTypeName, "Ethernet");
  EXPECT_STREQ(port.ConnectionTypeName, "iSCSI");
  EXPECT_STREQ(port.RoleName, "Both Initiator and Target");
}

TEST_F(LogicalPorts, UnreadableColumnsTakeTheirDefaults) {
  Row row;
  row.resize(kColumnCount, nullptr);
  EXPECT_EQ(list(Answer::of({with(row, kAddress, "3C:FD:FE:00:00:01")})), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  const _ZYMDB_PCI_LogicalPort& port = list_.ports[0];
  EXPECT_STREQ(port.PermanentAddress, "3C:FD:FE:00:00:01");
  EXPECT_EQ(port.MaxDataSize | port.TargetRelativePortNumber, 0u);
  EXPECT_EQ(port.PhyIdx | port.Idx | port.LinkTechnology | port.ProtocolType, 0);
  EXPECT_EQ(port.ConnectionType | port.Role, 0);
  EXPECT_EQ(port.Ethernet | port.FCoEFC | port.iSCSI, 0);
  EXPECT_EQ(port.MaxSpeed, 0u);
  EXPECT_EQ(port.vNICMode, 4);
  EXPECT_STREQ(port.NetworkAddresses, "");
  EXPECT_STREQ(port.FCoEPermanentAddress, "");
  EXPECT_STREQ(port.FCoENetworkAddressess, "");
  EXPECT_STREQ(port.LinkTechnologyName, "Unknown");
  EXPECT_STREQ(port.vNICModeName, "Unknown");
  EXPECT_STREQ(port.ProtocolTypeName, "Other");
  EXPECT_STREQ(port.ConnectionTypeName, "Unknown");
  EXPECT_STREQ(port.RoleName, "Unknown");
}

TEST_F(LogicalPorts, TextsAreReadWithTheSizeOfTheirFieldAndCodesWithSix) {
  list(Answer::of({port()}));
  std::vector<std::string> texts;
  for (const std::string& call : client().calls)
    if (call.starts_with("text")) texts.push_back(call);
  EXPECT_THAT(texts, ElementsAre("text 1 size 65", "text 2 size 65", "text 5 size 6", "text 6 size 6",
                                 "text 12 size 17", "text 13 size 17", "text 14 size 6", "text 15 size 6"));
}

TEST_F(LogicalPorts, AnAddressOfTwelveCharactersIsTheShortest) {
  EXPECT_EQ(list(Answer::of({port("3CFDFE00000"), port("3CFDFE000001")})), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1u);
  EXPECT_STREQ(list_.ports[0].PermanentAddress, "3CFDFE000001");
}

TEST_F(LogicalPorts, AnAddressOfUnknownLengthLeavesTheRowOut) {
  EXPECT_EQ(list(Answer::of({with(port(), kAddress, nullptr)})), ZYM_DB_STATUS_DONE);
  expect_empty();
}

TEST_F(LogicalPorts, AnAddressThatIsLongEnoughButUnreadableIsEmpty) {
  client().failures[{"text", 0}] = kFailure;
  EXPECT_EQ(list(Answer::of({port()})), ZYM_DB_STATUS_OK);
  EXPECT_STREQ(list_.ports[0].PermanentAddress, "");
}

TEST_F(LogicalPorts, AnUnreadableVnicModeIsFourAndUnknown) {
  EXPECT_EQ(list(Answer::of({with(port(), kVnicMode, nullptr), with(port(), kVnicMode, "4"),
                             with(port(), kVnicMode, "0x101")})),
            ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 3u);
  for (size_t i : {0u, 1u}) {
    EXPECT_EQ(list_.ports[i].vNICMode, 4);
    EXPECT_STREQ(list_.ports[i].vNICModeName, "Unknown");
  }
  EXPECT_EQ(list_.ports[2].vNICMode, 1);
  EXPECT_STREQ(list_.ports[2].vNICModeName, "Vot Virtual Fabric mode");
}

TEST_F(LogicalPorts, FailuresLeaveItEmpty) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{}, ZYM_DB_STATUS_DONE},
      {Answer{.row_count = 0xFFFFFFFF}, ZYM_DB_STATUS_NO_MEMORY},
      {Answer{.rows = {port()}, .end = kFailure, .row_count = 2}, kFailure},
      {Answer{.rows = {port()}, .end = ZYM_DB_STATUS_OK, .row_count = 2}, ZYM_DB_STATUS_OK},
  };
  for (const auto& [each, status] : cases) {
    _ZYMDB_PCI_LogicalPort own{};
    list_ = {5, &own};
    EXPECT_EQ(list(each), status);
    expect_empty();
  }
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(LogicalPorts, NeverMoreRowsThanTheRowCountAreTaken) {
  EXPECT_EQ(list(Answer{.rows = {port(), port()}, .row_count = 1}), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1u);
}

TEST_F(LogicalPorts, ARowWithoutAnAddressTakesItsPlaceOfTheRowCountWithIt) {
  EXPECT_EQ(list(Answer{.rows = {port(""), port()}, .row_count = 1}), ZYM_DB_STATUS_ROW);
  expect_empty();
  EXPECT_EQ(list(Answer{.rows = {port(), port(""), port()}, .row_count = 2}), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1u);
}

TEST_F(LogicalPorts, TheDatabaseIsLookedForBeforeTheArgument) {
  const auto all = [](_ZYMDB_PCI_LogicalPort_List* list) {
    return std::vector{zymdb_get_network_logical_port_list(1, list),
                       zymdb_get_network_logical_port_list2(1, 0, list),
                       zymdb_get_all_network_logical_port_list(1, list)};
  };
  EXPECT_THAT(all(nullptr), testing::Each(ZYM_DB_STATUS_INVALID_PARAM));
  client().has_database = false;
  EXPECT_THAT(all(nullptr), testing::Each(ZYM_DB_STATUS_NO_DB));
  EXPECT_THAT(all(&list_), testing::Each(ZYM_DB_STATUS_NO_DB));
  EXPECT_EQ(list_.count, 5u);
}

}  // namespace
