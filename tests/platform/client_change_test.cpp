// Inserts, updates, deletes and transactions through the client's interface, on a real database.
#include "platform/client_fixture.h"

namespace {

class ChangeTest : public ClientTest {
 protected:
  int update(const char* table, const char* where, std::vector<_zym_db_param_t> params = {}) {
    changed_ = -1;
    return zym_db_update(handle(), table, values_.get(), where, params.data(),
                         static_cast<int>(params.size()), &changed_);
  }

  int remove(const char* table, const char* where) {
    changed_ = -1;
    return zym_db_delete(handle(), table, where, nullptr, 0, &changed_);
  }

  int64_t insert(const char* table) {
    int64_t id = -1;
    EXPECT_EQ(zym_db_insert(handle(), table, values_.get(), 0, &id), 0);
    return id;
  }

  Set values_{zym_db_get_content_values(handle())};
  int64_t changed_ = -1;
};

TEST_F(ChangeTest, AnInsertTellsTheRowsId) {
  zym_db_content_put_uint(values_.get(), "FunKey", 4000000000);
  zym_db_content_put_int(values_.get(), "BusNo", -1);
  zym_db_content_put_uchar(values_.get(), "DeviceNo", 255);
  zym_db_content_put_short_uint(values_.get(), "VendorId", 65535);
  zym_db_content_put_text(values_.get(), "SlotDesignation", "it's \"one\"; --");
  zym_db_content_put_null(values_.get(), "SlotNo");
  EXPECT_EQ(insert("PCIs"), 1);
  EXPECT_EQ(insert("PCIs"), 2);
  EXPECT_EQ(
      rows("PCIs", {"_id", "FunKey", "BusNo", "DeviceNo", "VendorId", "SlotDesignation", "SlotNo"}, "_id=1"),
      "1|4000000000|-1|255|65535|it's \"one\"; --|NULL\n");
}

TEST_F(ChangeTest, AnInsertOfAnEmptySetTakesTheDefaults) {
  EXPECT_EQ(insert("PCIs"), 1);
  EXPECT_EQ(rows("PCIs", {"_id", "FunKey"}), "1|NULL\n");
}

TEST_F(ChangeTest, AnEventIdNeverComesBack) {
  for (int64_t id = 1; id <= 3; ++id) EXPECT_EQ(given("DPUEvents", {{"Slot", 1}}), id);
  ASSERT_EQ(remove("DPUEvents", nullptr), 0);
  EXPECT_EQ(given("DPUEvents", {{"Slot", 1}}), 4);
}

TEST_F(ChangeTest, AnUpdateChangesTheMatchingRowsAndCountsThem) {
  for (const int64_t slot : {1, 1, 2}) given("PCIAdapter", {{"SlotNo", slot}});
  zym_db_content_put_uint(values_.get(), "HealthStatus", 3);
  EXPECT_EQ(update("PCIAdapter", "SlotNo=1"), 0);
  EXPECT_EQ(changed_, 2);
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo", "HealthStatus"}), "1|3\n1|3\n2|0\n");
}

TEST_F(ChangeTest, AnUpdateTakesParameters) {
  given("PCIAdapter", {{"SlotNo", 1}});
  zym_db_content_put_uint(values_.get(), "HealthStatus", 3);
  EXPECT_EQ(update("PCIAdapter", "SlotNo=? AND HealthStatus=0", {u32(1)}), 0);
  EXPECT_EQ(changed_, 1);
}

TEST_F(ChangeTest, UpdateWithNoMatchingRowWritesNothing) {
  given("PCIAdapter", {{"SlotNo", 1}});
  zym_db_content_put_uint(values_.get(), "HealthStatus", 3);
  EXPECT_EQ(update("PCIAdapter", "SlotNo=2"), 0);
  EXPECT_EQ(changed_, 0);
}

TEST_F(ChangeTest, AnUpdateWithoutAFilterReachesEveryRow) {
  for (const int64_t slot : {1, 2}) given("PCIAdapter", {{"SlotNo", slot}});
  zym_db_content_put_uint(values_.get(), "HealthStatus", 3);
  EXPECT_EQ(update("PCIAdapter", nullptr), 0);
  EXPECT_EQ(changed_, 2);
}

TEST_F(ChangeTest, AnUpdateWithAnEmptySetChangesNothingAndSucceeds) {
  given("PCIAdapter", {{"SlotNo", 1}});
  EXPECT_EQ(update("PCIAdapter", "SlotNo=1"), 0);
  EXPECT_EQ(changed_, 0);
}

TEST_F(ChangeTest, AClearedSetIsEmptyAndCanBeFilledAgain) {
  zym_db_content_put_uint(values_.get(), "NoColumn", 3);
  zym_db_content_clear(values_.get());
  zym_db_content_put_uint(values_.get(), "SlotNo", 3);
  insert("PCIAdapter");
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}), "3\n");
}

TEST_F(ChangeTest, ADeleteRemovesTheMatchingRowsAndCountsThem) {
  for (const int64_t slot : {1, 1, 2}) given("PCIAdapter", {{"SlotNo", slot}});
  EXPECT_EQ(remove("PCIAdapter", "SlotNo=1"), 0);
  EXPECT_EQ(changed_, 2);
  EXPECT_EQ(remove("PCIAdapter", "SlotNo=9"), 0);
  EXPECT_EQ(changed_, 0);
  EXPECT_EQ(remove("PCIAdapter", nullptr), 0);
  EXPECT_EQ(changed_, 1);
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}), "");
}

// Row by row, the second one would not find the first one's key any more.
TEST_F(ChangeTest, AnUpdateTakesTheRowsThatTheFilterMeantBeforeIt) {
  given("PCIs", {{"FunKey", 1}, {"SlotNo", 2}});
  given("PCIs", {{"FunKey", 2}, {"SlotNo", 1}});
  zym_db_content_put_int(values_.get(), "FunKey", 7);
  EXPECT_EQ(update("PCIs", "SlotNo IN (SELECT FunKey FROM PCIs)"), 0);
  EXPECT_EQ(changed_, 2);
  EXPECT_EQ(rows("PCIs", {"FunKey", "SlotNo"}), "7|2\n7|1\n");
}

TEST_F(ChangeTest, ADeleteTakesTheRowsThatTheFilterMeantBeforeIt) {
  const std::vector<std::string> filters = {
      "SlotNo=1 OR SlotNo=(SELECT min(SlotNo) FROM PCIAdapter)",
      "SlotNo=1 OR NOT EXISTS (SELECT _id FROM PCIAdapter WHERE SlotNo=1)",
      "SlotNo IN (SELECT HealthStatus FROM PCIAdapter)",
      "NOT SlotNo IN (SELECT HealthStatus FROM PCIAdapter)",
      "EXISTS (SELECT _id FROM PCIAdapter WHERE SlotNo=1) AND SlotNo<3"};
  for (const std::string& filter : filters) {
    ASSERT_EQ(remove("PCIAdapter", nullptr), 0);
    for (const int64_t slot : {1, 2, 3}) given("PCIAdapter", {{"SlotNo", slot}, {"HealthStatus", slot - 1}});
    const int64_t meant = count("PCIAdapter", filter);
    EXPECT_EQ(remove("PCIAdapter", filter.c_str()), 0);
    EXPECT_EQ(changed_, meant) << filter;
    EXPECT_EQ(count("PCIAdapter", "1"), 3 - meant) << filter;
  }
}

TEST_F(ChangeTest, AnEmptyFilterIsNoFilterForAllRows) {
  given("PCIAdapter", {{"SlotNo", 1}});
  EXPECT_EQ(remove("PCIAdapter", ""), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(changed_, -1);
  EXPECT_EQ(rows("PCIAdapter", {"SlotNo"}), "1\n");
}

TEST_F(ChangeTest, AFailedChangeLeavesItsOutputs) {
  zym_db_content_put_uint(values_.get(), "NoColumn", 3);
  int64_t id = 77;
  EXPECT_EQ(zym_db_insert(handle(), "PCIs", values_.get(), 0, &id), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(id, 77);
  given("PCIs", {{"FunKey", 1}});
  EXPECT_EQ(update("PCIs", "FunKey=1"), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(changed_, -1);
}

TEST_F(ChangeTest, ACommittedTransactionIsSeenWhole) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 1}});
  given("PCIs", {{"FunKey", 2}});
  EXPECT_EQ(count("PCIs", "1"), 2);
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
}

TEST_F(ChangeTest, ARolledBackTransactionLeavesNothing) {
  given("PCIs", {{"FunKey", 1}});
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 2}});
  ASSERT_EQ(remove("PCIs", "FunKey=1"), 0);
  ASSERT_EQ(zym_db_rollback(handle()), 0);
  EXPECT_EQ(rows("PCIs", {"FunKey"}), "1\n");
}

TEST_F(ChangeTest, TransactionsDoNotNestAndDoNotEndUnbegun) {
  EXPECT_EQ(zym_db_commit(handle()), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_rollback(handle()), ZYM_DB_STATUS_ERROR);
  ASSERT_EQ(zym_db_begin(handle()), 0);
  EXPECT_EQ(zym_db_begin(handle()), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(zym_db_commit(handle()), 0);
}

TEST_F(ChangeTest, AFailedStatementDoesNotEndTheTransaction) {
  ASSERT_EQ(zym_db_begin(handle()), 0);
  given("PCIs", {{"FunKey", 1}});
  EXPECT_EQ(remove("PCIs", "FunKey="), ZYM_DB_STATUS_ERROR);
  given("PCIs", {{"FunKey", 2}});
  ASSERT_EQ(zym_db_commit(handle()), 0);
  EXPECT_EQ(count("PCIs", "1"), 2);
}

}  // namespace
