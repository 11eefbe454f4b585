// What a thread is told about its last failure.
#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>
#include <thread>

#include "platform/client_fixture.h"

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using testing::IsEmpty;

class LastErrorTest : public ClientTest {
 protected:
  LastErrorTest() { zym_db_clear_error(); }

  static int last_status() {
    int status = -1;
    zym_db_last_error(&status);
    return status;
  }
  static std::string last_text() { return zym_db_last_error(nullptr); }

  int query_of(_zym_db_handle_t* handle, const char* table, const char* where) {
    zym_db_result_t* rows = nullptr;
    const int status = zym_db_query(handle, table, nullptr, 0, where, nullptr, 0, 0, &rows);
    if (rows != nullptr) zym_db_free_result(rows);
    return status;
  }
};

TEST_F(LastErrorTest, NothingFailedYet) {
  std::thread([] {
    EXPECT_EQ(last_status(), 0);
    EXPECT_THAT(last_text(), IsEmpty());
  }).join();
}

TEST_F(LastErrorTest, IsTheLineThatWasLogged) {
  const std::string log = log_of([&] { EXPECT_EQ(query_of(handle(), "PCIs", "FunKey=1; x"), 1); });
  EXPECT_EQ(last_status(), 1);
  EXPECT_EQ(last_text(), "query of PCIs where FunKey=1; x failed: text after the statement (status 1)");
  EXPECT_EQ(log, "zymdb error: " + last_text() + "\n");
}

TEST_F(LastErrorTest, StaysAfterSuccessesUntilItIsCleared) {
  query_of(handle(), "NoTable", "1");
  const std::string failure = last_text();
  EXPECT_EQ(query_of(handle(), "PCIs", "1"), 0);
  EXPECT_EQ(given("PCIs", {{"FunKey", 1}}), 1);
  EXPECT_EQ(last_text(), failure);
  zym_db_clear_error();
  EXPECT_EQ(last_status(), 0);
  EXPECT_THAT(last_text(), IsEmpty());
}

TEST_F(LastErrorTest, ALaterFailureTakesThePlaceOfAnEarlierOne) {
  query_of(handle(), "NoTable", "1");
  EXPECT_EQ(zym_db_commit(handle()), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(last_text(), "commit failed: no transaction is open on this thread (status 1)");
}

TEST_F(LastErrorTest, IsOneLineWithoutControlCharacters) {
  query_of(handle(), "PCIs", "FunKey=1 \n\x1B\x7F AND");
  EXPECT_THAT(last_text(), HasSubstr("FunKey=1     AND failed"));
}

TEST_F(LastErrorTest, IsCutWhereALogLineIs) {
  const std::string table(100'000, 'x');
  const std::string log = log_of([&] { query_of(handle(), table.c_str(), table.c_str()); });
  EXPECT_EQ(log, "zymdb error: " + last_text() + "\n");
}

TEST_F(LastErrorTest, NamesTheInventoryThatCannotBeOpened) {
  lose_database();
  EXPECT_EQ(last_status(), 44);
  EXPECT_EQ(last_text(), "cannot open the inventory database " +
                             (folder() / "missing/inventory.db").string() + ": No such file or directory");
}

TEST_F(LastErrorTest, NamesTheAddressThatNoEngineOpens) {
  ASSERT_EQ(zym_db_close(handle()), 0);
  setenv("ZYMDB_INVENTORY", "other://host/db", 1);
  EXPECT_EQ(get_dmdb_handle(), nullptr);
  EXPECT_EQ(last_status(), ZYM_DB_STATUS_NO_DB);
  EXPECT_THAT(last_text(), HasSubstr("other://host/db"));
}

TEST_F(LastErrorTest, NamesTheDatabaseThatIsNotKnown) {
  EXPECT_EQ(zym_db_open("localhost", "root", "", "other", 0), nullptr);
  EXPECT_EQ(last_status(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(last_text(), "cannot open other: unknown database other");
  EXPECT_EQ(zym_db_open("elsewhere", "root", "", "propertiesdb", 0), nullptr);
  EXPECT_EQ(last_text(), "cannot open propertiesdb: no database server at elsewhere");
}

TEST_F(LastErrorTest, ANullHandleIsAFailureOfItsOwnAfterTheOpeningThatFailed) {
  lose_database();
  zym_db_result_t* rows = nullptr;
  EXPECT_EQ(zym_db_query(get_dmdb_handle(), "PCIs", nullptr, 0, nullptr, nullptr, 0, 0, &rows),
            ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(last_status(), ZYM_DB_STATUS_INVALID_PARAM);
  EXPECT_EQ(last_text(), "invalid argument");
}

TEST_F(LastErrorTest, TellsOfAClosedHandle) {
  _zym_db_handle_t* const closed = handle();
  ASSERT_EQ(zym_db_close(closed), 0);
  EXPECT_EQ(query_of(closed, "PCIs", "1"), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(last_status(), ZYM_DB_STATUS_NO_DB);
  EXPECT_EQ(last_text(), "no database");
}

// Every way to give an operation what it cannot take.
TEST_F(LastErrorTest, TellsOfInvalidArguments) {
  const Set values(zym_db_get_content_values(handle()));
  zym_db_result_t* rows = nullptr;
  const std::function<void()> misuses[] = {
      [] { zym_db_open(nullptr, nullptr, nullptr, nullptr, 0); },
      [] { zym_db_close(nullptr); },
      [&] { zym_db_raw_query(handle(), nullptr, 1, &rows); },
      [&] { zym_db_query(handle(), "PCIs", nullptr, 1, nullptr, nullptr, 0, 0, &rows); },
      [&] { zym_db_query(handle(), "PCIs", nullptr, 0, "_id=?", nullptr, 0, 0, &rows); },
      [&] { zym_db_insert(handle(), nullptr, values.get(), 0, nullptr); },
      [&] { zym_db_update(handle(), "PCIs", nullptr, nullptr, nullptr, 0, nullptr); },
      [] { zym_db_delete(nullptr, "PCIs", nullptr, nullptr, 0, nullptr); },
      [] { zym_db_begin(nullptr); },
      [] { zym_db_get_content_values(nullptr); },
      [&] { zym_db_content_put_text(values.get(), "FunKey", nullptr); },
  };
  for (size_t i = 0; i < std::size(misuses); ++i) {
    zym_db_clear_error();
    misuses[i]();
    EXPECT_EQ(last_status(), ZYM_DB_STATUS_INVALID_PARAM) << "misuse " << i;
    EXPECT_THAT(last_text(), AnyOf("invalid argument", HasSubstr("without a value"))) << "misuse " << i;
  }
}

TEST_F(LastErrorTest, ReadsOfAResultLeaveItAsItWas) {
  given("PCIs", {{"FunKey", 1}, {"SlotDesignation", nullptr}});
  const Rows rows = query("PCIs", {"SlotDesignation"});
  zym_db_result_step(rows.get());
  char text[8];
  EXPECT_NE(zym_db_result_column_text(rows.get(), 0, text, sizeof text), 0);
  EXPECT_NE(zym_db_result_column_text(rows.get(), 7, text, sizeof text), 0);
  EXPECT_EQ(last_status(), 0);
}

TEST_F(LastErrorTest, IsTheThreadsOwn) {
  query_of(handle(), "NoTable", "1");
  std::thread([&] {
    EXPECT_EQ(last_status(), 0);
    EXPECT_EQ(zym_db_commit(get_dmdb_handle()), ZYM_DB_STATUS_ERROR);
    EXPECT_THAT(last_text(), HasSubstr("commit failed"));
  }).join();
  EXPECT_THAT(last_text(), HasSubstr("NoTable"));
}

}  // namespace
