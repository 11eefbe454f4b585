// A session's limits, with short ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "client/status.h"
#include "platform/engine_session.h"
#include "support/temporary_folder.h"

namespace zymdb::client {
namespace {

class SessionTest : public testing::Test {
 protected:
  std::unique_ptr<Session> open() {
    OpenedSession opened = open_session({folder_.file("inventory.db"), &kInventorySchema}, writers_, limits_);
    EXPECT_EQ(opened.status, 0) << opened.error;
    return std::move(opened.session);
  }

  int query(Session& session, const char* where) {
    Request request;
    request.table = "DPUEvents";
    request.where = where;
    EXPECT_EQ(statement_.compose(session.catalog(), request), 0) << statement_.reason();
    return session.query(statement_, result_);
  }

  int insert(Session& session, std::string_view message) {
    ContentValues values;
    values.put_text("Message", message);
    values.put_integer("Slot", 1);
    return insert(session, "DPUEvents", values);
  }

  int insert(Session& session, const char* table, const char* column, int64_t value) {
    ContentValues values;
    values.put_integer(column, value);
    return insert(session, table, values);
  }

  int insert(Session& session, const char* table, const ContentValues& values) {
    Request request;
    request.kind = Request::Kind::kInsert;
    request.table = table;
    request.values = &values;
    EXPECT_EQ(statement_.compose(session.catalog(), request), 0);
    return session.change(statement_, change_);
  }

  TemporaryFolder folder_;
  WriterQueue writers_;
  Limits limits_;
  Statement statement_;
  Result result_;
  Change change_;
};

TEST_F(SessionTest, AStatementThatRunsTooLongIsEnded) {
  limits_.statement = std::chrono::milliseconds(30);
  const auto session = open();
  ASSERT_EQ(session->begin(), 0);
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(insert(*session, "x"), 0);
    ASSERT_EQ(insert(*session, "PCISetting", "PfaKey", i), 0);
    ASSERT_EQ(insert(*session, "SensorSlotMap", "HealthStatusId", i), 0);
  }
  ASSERT_EQ(session->commit(), 0);
  const char* const kEndless =
      "(SELECT count(*) FROM PCISetting WHERE (SELECT count(*) FROM SensorSlotMap WHERE "
      "HealthStatusId+PfaKey+Slot>0)>PfaKey+Slot)>Slot";
  EXPECT_EQ(query(*session, kEndless), kStatusTimedOut);
  EXPECT_EQ(query(*session, "_id=1"), 0);
  EXPECT_EQ(result_.row_count(), 1U);
}

TEST_F(SessionTest, AResultBeyondTheLimitIsRefused) {
  limits_.result = 4096;
  const auto session = open();
  for (int i = 0; i < 10; ++i) ASSERT_EQ(insert(*session, std::string(1000, 'x')), 0);
  EXPECT_EQ(query(*session, "Slot=1"), kStatusTooLarge);
  EXPECT_EQ(query(*session, "_id=1"), 0);
}

TEST_F(SessionTest, TheWriteAheadLogStaysWithinItsLimit) {
  limits_.log = 64 * 1024;
  const auto session = open();
  uintmax_t largest = 0;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(insert(*session, std::string(4000, 'x')), 0);
    largest = std::max(largest, std::filesystem::file_size(folder_.file("inventory.db-wal")));
  }
  EXPECT_GT(largest, limits_.log / 2);
  EXPECT_LT(largest, 2 * limits_.log);
}

TEST_F(SessionTest, AnotherConnectionsWriterIsWaitedForNoLongerThanTheLimit) {
  limits_.writer = std::chrono::milliseconds(30);
  const auto holder = open();
  WriterQueue other_process;
  OpenedSession opened =
      open_session({folder_.file("inventory.db"), &kInventorySchema}, other_process, limits_);
  ASSERT_NE(opened.session, nullptr);
  ASSERT_EQ(holder->begin(), 0);
  EXPECT_EQ(insert(*opened.session, "x"), kStatusBusy);
  EXPECT_EQ(opened.session->begin(), kStatusBusy);
  EXPECT_EQ(query(*opened.session, "1"), 0);
  ASSERT_EQ(holder->commit(), 0);
  EXPECT_EQ(insert(*opened.session, "x"), 0);
}

TEST_F(SessionTest, AThreadsOwnTransactionIsWaitedForNoLongerThanTheLimit) {
  limits_.writer = std::chrono::milliseconds(30);
  const auto holder = open();
  const auto second = open();
  ASSERT_EQ(holder->begin(), 0);
  EXPECT_EQ(insert(*second, "x"), kStatusBusy);
  ASSERT_EQ(holder->rollback(), 0);
  EXPECT_EQ(insert(*second, "x"), 0);
}

TEST_F(SessionTest, ASessionThatEndsInItsTransactionLetsTheNextWriterIn) {
  limits_.writer = std::chrono::milliseconds(30);
  const auto second = open();
  {
    const auto holder = open();
    ASSERT_EQ(holder->begin(), 0);
    ASSERT_EQ(insert(*holder, "lost"), 0);
  }
  EXPECT_EQ(insert(*second, "kept"), 0);
  EXPECT_EQ(query(*second, "Message='lost'"), 0);
  EXPECT_EQ(result_.row_count(), 0U);
}

TEST_F(SessionTest, AValueThatTheTableDoesNotAdmitIsAConstraint) {
  const auto session = open();
  ASSERT_EQ(insert(*session, "x"), 0);
  EXPECT_EQ(insert(*session, "DPUEvents", "_id", 1), kStatusConstraint);
  ContentValues values;
  values.put_text("_id", "no number");
  EXPECT_EQ(insert(*session, "DPUEvents", values), kStatusConstraint);
}

}  // namespace
}  // namespace zymdb::client
