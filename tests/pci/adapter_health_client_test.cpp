// Adapter health and NC-SI package ids: exact calls and log lines, and the answers to every failure.
#include <gmock/gmock.h>

#include "support/scripted_client.h"
#include "zymdb_pci.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int kFailure = 77;

class AdapterHealth : public scripted::ClientTest {
 protected:
  uint8_t health_ = 99;
};

TEST_F(AdapterHealth, IsReadFromTheFirstRowOfTheSlot) {
  answer({Row(0x105), Row(6)});
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &health_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(health_, 5);
  EXPECT_THAT(client().calls, ElementsAre("query PCIAdapter [HealthStatus] where SlotNo=3 AND Location=1",
                                          "row_count", "step", "uchar 0", "free_result"));
}

TEST_F(AdapterHealth, TheArgumentIsJudgedBeforeTheDatabaseIsLookedFor) {
  client().has_database = false;
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &health_), ZYM_DB_STATUS_NO_DB);
}

TEST_F(AdapterHealth, FailuresLeaveTheOutputUntouched) {
  const std::pair<Answer, int> cases[] = {
      {Answer::failing(kFailure, true), kFailure},
      {Answer::without_result(), ZYM_DB_STATUS_OK},
      {Answer{}, ZYM_DB_STATUS_NOT_FOUND},
      {Answer{.row_count = 1}, ZYM_DB_STATUS_DONE},
      {Answer{.end = kFailure, .row_count = 1}, kFailure},
      {Answer::of({Row(nullptr)}), ZYM_DB_STATUS_ERROR},
  };
  for (const auto& [each, status] : cases) {
    answer(each);
    EXPECT_EQ(zymdb_get_adapter_health_status(1, 3, &health_), status);
    EXPECT_EQ(health_, 99);
  }
}

TEST_F(AdapterHealth, IsWrittenAsAnUnsignedNumberToEveryRowOfTheSlot) {
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 0xFFFFFFFF), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls,
              ElementsAre("get_content_values", "clear", "put HealthStatus=uint:4294967295",
                          "update PCIAdapter {HealthStatus=uint:4294967295} where SlotNo=3 AND Location=1",
                          "free_content_values"));
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(AdapterHealth, AFailedWriteIsLogged) {
  client().failures[{"update", 0}] = kFailure;
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), kFailure);
  EXPECT_THAT(client().log,
              ElementsAre("error: Update pci location [1], slot [3]  health status [2] fail, sql where "
                          "segment:[SlotNo=3 AND Location=1], return [77]"));
}

TEST_F(AdapterHealth, AFailedPutWritesNothing) {
  client().failures[{"put", 0}] = kFailure;
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), kFailure);
  EXPECT_THAT(client().statements, IsEmpty());
  EXPECT_EQ(client().log.size(), 1u);
}

TEST_F(AdapterHealth, AWriteWithoutMemoryIsLoggedUnderTheNameItAlwaysHad) {
  client().has_values = false;
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().log,
              ElementsAre("error: zymdb_set_network_physical_port_state, ZYM_DB_STATUS_NO_MEMORY"));
}

TEST_F(AdapterHealth, AWriteWithoutADatabaseIsSilent) {
  client().has_database = false;
  EXPECT_EQ(zymdb_set_adapter_health_status(1, 3, 2), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(client().log, IsEmpty());
}

class AdapterKey : public scripted::ClientTest {
 protected:
  uint32_t key_ = 99;
};

TEST_F(AdapterKey, IsReadFromTheFirstRowOfTheSlot) {
  answer({Row(0x10003), Row(5)});
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(key_, 0x10003u);
  EXPECT_THAT(client().statements, ElementsAre("query PCIAdapter [PCIKey] where Location=1 AND SlotNo=3"));
}

TEST_F(AdapterKey, WhateverFailsReadsAsAMissingDatabase) {
  for (const Answer& each :
       {Answer::failing(kFailure, true), Answer::without_result(), Answer{}, Answer{.end = kFailure}}) {
    answer(each);
    EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key_), ZYM_DB_STATUS_NO_DB);
  }
  client().has_database = false;
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key_), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(key_, 99u);
}

TEST_F(AdapterKey, AnUnreadableKeyAnswersTheReadsStatus) {
  answer({Row(nullptr)});
  EXPECT_EQ(zymdb_get_adapter_pcikey_by_slotNo(1, 3, &key_), ZYM_DB_STATUS_ERROR);
}

class PackageIds : public scripted::ClientTest {
 protected:
  uint8_t id1_ = 99;
  uint8_t id2_ = 98;
};

TEST_F(PackageIds, AreReadFromTheFirstRowOfTheSlot) {
  answer({Row(1, 2), Row(3, 4)});
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &id1_, &id2_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(id1_, 1);
  EXPECT_EQ(id2_, 2);
  EXPECT_THAT(client().statements,
              ElementsAre("query NCSIPackageID [PackageID1,PackageID2] where Location=1 AND SlotNo=3"));
}

TEST_F(PackageIds, ThatCannotBeReadLeaveTheirOutputs) {
  answer({Row(nullptr, 2)});
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &id1_, &id2_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(id1_, 99);
  EXPECT_EQ(id2_, 2);
}

TEST_F(PackageIds, WhateverFailsReadsAsAMissingDatabase) {
  for (const Answer& each :
       {Answer::failing(kFailure, true), Answer::without_result(), Answer{}, Answer{.end = kFailure}}) {
    answer(each);
    EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &id1_, &id2_), ZYM_DB_STATUS_NO_DB);
  }
  client().has_database = false;
  EXPECT_EQ(zymdb_get_ncsi_id_by_slotNo(1, 3, &id1_, &id2_), ZYM_DB_STATUS_NO_DB);
}

TEST_F(PackageIds, OfASlotWithARowAreUpdatedWithoutTheType) {
  answer({Row(1, 2)});
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().calls,
              ElementsAre("get_content_values", "clear", "put PackageID1=uchar:4", "put PackageID2=uchar:5",
                          "query NCSIPackageID [PackageID1,PackageID2] where Location=1 AND SlotNo=3", "step",
                          "uchar 0", "uchar 1", "free_result",
                          "update NCSIPackageID {PackageID1=uchar:4, PackageID2=uchar:5} where SlotNo=3 AND "
                          "Location=1",
                          "free_content_values"));
}

TEST_F(PackageIds, OfASlotWithoutARowAreInserted) {
  for (const Answer& each : {Answer{}, Answer::failing(kFailure), Answer::without_result()}) {
    answer(each);
    EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(0x101, 0x10003, 7, 4, 5), ZYM_DB_STATUS_OK);
    EXPECT_EQ(client().statements.back(),
              "insert NCSIPackageID {PackageID1=uchar:4, PackageID2=uchar:5, Location=uchar:1, "
              "SlotNo=short_uint:3, Type=uchar:7}");
  }
  EXPECT_THAT(client().log, IsEmpty());
}

TEST_F(PackageIds, FailedWritesAreLogged) {
  client().failures[{"update", 0}] = kFailure;
  client().failures[{"insert", 0}] = kFailure;
  answer({Row(1, 2)});
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), kFailure);
  answer(std::vector<Row>{});
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), kFailure);
  EXPECT_THAT(client().log,
              ElementsAre("error: Update pci location [1], slot [3]  id1 [4], id2 [5] fail, sql where "
                          "segment:[SlotNo=3 AND Location=1], return [77]",
                          "error: insert pci location [1], slot [3]  id1 [4], id2 [5] fail, return [77]"));
}

TEST_F(PackageIds, AWriteWithoutMemoryIsLoggedAndOneWithoutADatabaseIsNot) {
  client().has_values = false;
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_THAT(client().log, ElementsAre("error: zymdb_set_ncsi_id_by_slotNo, ZYM_DB_STATUS_NO_MEMORY"));
  client().has_database = false;
  EXPECT_EQ(zymdb_set_ncsi_id_by_slotNo(1, 3, 7, 4, 5), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(client().log.size(), 1u);
}

class PackageIdList : public scripted::ClientTest {
 protected:
  ~PackageIdList() override { std::free(list_.entries); }
  _ZYMDB_NCSIPackageID_List list_{0, nullptr};
};

TEST_F(PackageIdList, HoldsEverySlot) {
  answer({Row(3, 1, 10, 11), Row(4, 1, 12, 13)});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("query NCSIPackageID [SlotNo,Location,PackageID1,PackageID2] where NULL"));
  ASSERT_EQ(list_.count, 2);
  EXPECT_EQ(list_.entries[1].SlotNo, 4);
  EXPECT_EQ(list_.entries[1].Location, 1);
  EXPECT_EQ(list_.entries[1].PackageID1, 12);
  EXPECT_EQ(list_.entries[1].PackageID2, 13);
}

TEST_F(PackageIdList, RowsWithAnUnreadableColumnAreLeftOut) {
  answer({Row(nullptr, 1, 1, 1), Row(1, nullptr, 1, 1), Row(1, 1, nullptr, 1), Row(1, 1, 1, nullptr),
          Row(5, 1, 1, 1)});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_OK);
  ASSERT_EQ(list_.count, 1);
  EXPECT_EQ(list_.entries[0].SlotNo, 5);
}

TEST_F(PackageIdList, ItsEightBitCountWraps) {
  std::vector<Row> rows;
  for (int slot = 0; slot < 258; ++slot) rows.push_back(Row(slot, 1, 1, 1));
  answer(rows);
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 2);
  EXPECT_EQ(list_.entries[0].SlotNo, 256);
  EXPECT_EQ(list_.entries[1].SlotNo, 257);
  EXPECT_EQ(list_.entries[2].SlotNo, 2);
}

TEST_F(PackageIdList, NeverMoreThanTheRowCountIsStored) {
  answer(Answer{.rows = {Row(1, 1, 1, 1), Row(2, 1, 1, 1)}, .row_count = 1});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1);
}

TEST_F(PackageIdList, AStepThatEndsWithZeroIsNoFailure) {
  answer(Answer{.rows = {Row(1, 1, 1, 1)}, .end = ZYM_DB_STATUS_OK});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_OK);
  EXPECT_EQ(list_.count, 1);
}

TEST_F(PackageIdList, AFailureEmptiesTheList) {
  _ZYMDB_NCSIPackageID own{};
  list_ = {5, &own};
  answer(Answer::failing(kFailure, true));
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), kFailure);
  EXPECT_EQ(list_.count, 0);
  EXPECT_EQ(list_.entries, nullptr);
  list_ = {5, &own};
  answer(Answer{.rows = {Row(1, 1, 1, 1)}, .end = kFailure, .row_count = 3});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), kFailure);
  EXPECT_EQ(list_.count, 0);
  EXPECT_EQ(list_.entries, nullptr);
}

TEST_F(PackageIdList, WithoutMemoryIsEmpty) {
  answer(Answer{.row_count = 0xFFFFFFFF});
  EXPECT_EQ(zymdb_get_ncsi_id_list(&list_), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(list_.entries, nullptr);
}

TEST_F(PackageIdList, TheDatabaseIsLookedForBeforeTheArgument) {
  EXPECT_EQ(zymdb_get_ncsi_id_list(nullptr), ZYM_DB_STATUS_INVALID_PARAM);
  client().has_database = false;
  EXPECT_EQ(zymdb_get_ncsi_id_list(nullptr), ZYM_DB_STATUS_NO_DB);
}

}  // namespace
