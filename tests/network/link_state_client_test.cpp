// Reading and writing the state of a link: exact calls and log lines, and the answers to every failure.
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
constexpr char kQuery[] =
    "query PCIPhysicalPortStat [Idx,LinkStatus,LinkSpeed,TxUtil,RxUtil] where PCIFuncKey=12";

class LinkState : public scripted::ClientTest {
 protected:
  int read(int port) { return zymdb_get_network_physical_port_link_state(12, &state_, port); }
  int write(int port) { return zymdb_set_network_physical_port_link_state(12, &state_, port); }
  void expect_untouched() const {
    EXPECT_EQ(state_.LinkStatus, 1u);
    EXPECT_EQ(state_.Idx, 9);
  }

  _ZYMDB_PCI_PortLinkState state_{1, 25000, 3, 255, 9};
};

TEST_F(LinkState, IsReadFromTheFirstRowWithTheIndex) {
  answer({Row(0, 1, 1000, 10, 20), Row(1, 2, 0, 30, 40), Row(1, 3, 3, 3, 3)});
  EXPECT_EQ(read(1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state_.LinkStatus, 2u);
  EXPECT_EQ(state_.LinkSpeed, 0u);
  EXPECT_EQ(state_.TxUtil, 30u);
  EXPECT_EQ(state_.RxUtil, 40u);
  EXPECT_EQ(state_.Idx, 1);
  EXPECT_THAT(client().statements, ElementsAre(kQuery));
  EXPECT_THAT(client().log,
              ElementsAre("error: Find a physical port, func_key = 12, port_index = 0, no equals to 1\n"));
}

TEST_F(LinkState, OfTheOnlyPortIsReadWhateverItsIndex) {
  answer({Row(7, 1, 1000, 10, 20)});
  EXPECT_EQ(read(-1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state_.Idx, 7);
  EXPECT_EQ(state_.LinkSpeed, 1000u);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(LinkState, WithoutAnIndexTheFunctionMustHaveOnePort) {
  answer({Row(0, 1, 1, 1, 1), Row(1, 1, 1, 1, 1)});
  EXPECT_EQ(read(-1), ZYM_DB_STATUS_NOT_FOUND);
  answer(std::vector<Row>{});
  EXPECT_EQ(read(-1), ZYM_DB_STATUS_NOT_FOUND);
  expect_untouched();
  EXPECT_THAT(client().log, ElementsAre("error: Find 2 physical ports, func_key = 12, port_index = -1\n",
                                        "error: Find 0 physical ports, func_key = 12, port_index = -1\n"));
}

TEST_F(LinkState, OfAnotherIndexThanTheOnlyOneIsNotFound) {
  answer({Row(0, 5, 5, 5, 5)});
  EXPECT_EQ(read(1), ZYM_DB_STATUS_NOT_FOUND);
  expect_untouched();
  EXPECT_THAT(client().log,
              ElementsAre("error: Find a physical port, func_key = 12, port_index = 0, no equals to 1\n"));
}

TEST_F(LinkState, ARowWithAnUnreadableIndexIsPassedOverInSilence) {
  answer({Row(nullptr, 5, 5, 5, 5)});
  EXPECT_EQ(read(-1), ZYM_DB_STATUS_NOT_FOUND);
  answer({Row(nullptr, 5, 5, 5, 5), Row(1, 6, 6, 6, 6)});
  EXPECT_EQ(read(1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state_.LinkStatus, 6u);
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(LinkState, UnreadableValuesAreZero) {
  answer({Row(1, nullptr, nullptr, nullptr, nullptr)});
  EXPECT_EQ(read(1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state_.LinkStatus | state_.LinkSpeed | state_.TxUtil | state_.RxUtil, 0u);
  EXPECT_EQ(state_.Idx, 1);
}

TEST_F(LinkState, AnIndexIsComparedWholeAndStoredInSixteenBits) {
  answer({Row(0x10001, 1, 1, 1, 1)});
  EXPECT_EQ(read(1), ZYM_DB_STATUS_NOT_FOUND);
  answer({Row(0x10001, 1, 1, 1, 1)});
  EXPECT_EQ(read(0x10001), ZYM_DB_STATUS_OK);
  EXPECT_EQ(state_.Idx, 1);
}

TEST_F(LinkState, FailuresLeaveTheOutputUntouched) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure), kFailure},
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{.end = kFailure}, ZYM_DB_STATUS_NOT_FOUND},
  };
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(read(1), status);
    expect_untouched();
  }
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(LinkState, IsWrittenToTheRowThatWasFound) {
  answer({Row(1, 2, 0, 0, 0)});
  EXPECT_EQ(write(1), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre(kQuery,
                          "update PCIPhysicalPortStat {LinkStatus=uint:1, LinkSpeed=uint:25000, "
                          "TxUtil=uint:3, RxUtil=uint:255} where  PCIFuncKey='12' AND  Idx='1'"));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(LinkState, OfTheOnlyPortIsWrittenByTheFunctionAlone) {
  answer({Row(4, 2, 0, 0, 0)});
  EXPECT_EQ(write(-1), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.back(), testing::EndsWith("} where  PCIFuncKey='12'"));
}

TEST_F(LinkState, AWritesFilterHasTheKeyUnsignedAndTheIndexSigned) {
  answer({Row(-2, 2, 0, 0, 0)});
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(0xFFFFFFFF, &state_, -2), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements.front(), testing::EndsWith("where PCIFuncKey=-1"));
  EXPECT_THAT(client().statements.back(), testing::EndsWith("where  PCIFuncKey='4294967295' AND  Idx='-2'"));
}

TEST_F(LinkState, ThatHasNotChangedIsWrittenAgain) {
  answer({Row(1, 1, 25000, 3, 255)});
  EXPECT_EQ(write(1), ZYM_DB_STATUS_OK);
  EXPECT_EQ(client().statements.size(), 2u);
}

TEST_F(LinkState, OfAPortThatIsNotFoundIsNotWritten) {
  const std::pair<Answer, int> cases[] = {
      {Answer{}, ZYM_DB_STATUS_NOT_FOUND},
      {Answer::of({Row(0, 1, 1, 1, 1)}), ZYM_DB_STATUS_NOT_FOUND},
      {Answer::failing(kFailure), kFailure},
  };
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(write(1), status);
  }
  EXPECT_THAT(client().statements, ElementsAre(kQuery, kQuery, kQuery));
}

TEST_F(LinkState, AFailedWriteIsLoggedUnderTheNameItAlwaysHad) {
  client().failures[{"update", 0}] = kFailure;
  answer({Row(1, 2, 0, 0, 0)});
  EXPECT_EQ(write(1), kFailure);
  EXPECT_THAT(
      client().log,
      ElementsAre("error: zymdb_set_network_physical_port_state failed, filter:  PCIFuncKey='12' AND  "
                  "Idx='1', value: LinkStatus(0x1) LinkSpeed(0x61a8) TxUtil(0x3) RxUtil(0xff), ret: "
                  "77\n"));
}

TEST_F(LinkState, AFailedPutWritesNothing) {
  // Each write puts four values.
  for (int put = 0; put < 4; ++put) {
    client().failures[{"put", 4 * put + put}] = kFailure;
    answer({Row(1, 2, 0, 0, 0)});
    EXPECT_EQ(write(1), kFailure) << put;
  }
  EXPECT_THAT(client().statements, ElementsAre(kQuery, kQuery, kQuery, kQuery));
}

TEST_F(LinkState, AWriteWithoutMemoryIsLogged) {
  client().has_values = false;
  answer({Row(1, 2, 0, 0, 0)});
  EXPECT_EQ(write(1), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().log,
              ElementsAre("error: zymdb_set_network_physical_port_state, ZYM_DB_STATUS_NO_MEMORY"));
}

TEST_F(LinkState, WithoutADatabaseIsNeitherReadNorWritten) {
  client().has_database = false;
  EXPECT_EQ(read(1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_get_network_physical_port_link_state(12, nullptr, 1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(write(1), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(zymdb_set_network_physical_port_link_state(12, nullptr, 1), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().log, IsEmpty());
}

}  // namespace
