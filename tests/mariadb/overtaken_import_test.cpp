// `zymdb … import` where another writer of the server is first: it is made again, and once.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mysql.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <memory>
#include <stdexcept>

#include "support/parsing_marker.h"
#include "support/test_database.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::HasSubstr;

// Another client of the server, in one transaction. It has written so much that the server gives way to it.
class Rival {
 public:
  explicit Rival(const TestDatabase& database) : mysql_(mysql_init(nullptr)) {
    const std::string socket = std::string(std::getenv("ZYMDB_TEST_SERVER")) + "/socket";
    if (mysql_real_connect(mysql_.get(), nullptr, "root", "", database.name().c_str(), 0, socket.c_str(),
                           CLIENT_MULTI_RESULTS) == nullptr)
      throw std::runtime_error(mysql_error(mysql_.get()));
    run("CREATE TABLE Written (Number INT)");
    run("START TRANSACTION");
    run("INSERT INTO Written SELECT seq FROM seq_1_to_1000");
  }

  void run(const std::string& sql) {
    if (mysql_real_query(mysql_.get(), sql.data(), sql.size()) != 0)
      throw std::runtime_error(sql + ": " + mysql_error(mysql_.get()));
    mysql_free_result(mysql_store_result(mysql_.get()));
  }

 private:
  struct Close {
    void operator()(MYSQL* mysql) const { mysql_close(mysql); }
  };
  std::unique_ptr<MYSQL, Close> mysql_;
};

struct Import {
  const char* name;
  Words command;
  const char* table;
  std::string content;
  std::string nothing;  // a file of no rows
  const char* said;
};

std::ostream& operator<<(std::ostream& stream, const Import& import) {
  return stream << import.name;
}

class OvertakenImport : public testing::TestWithParam<Import> {
 protected:
  Outcome import(const std::string& content) {
    const std::string file = folder_.file("imported");
    write_file(file, content);
    Words words = GetParam().command;
    words.push_back(file);
    return run_tool(words, {.environment = {{"ZYMDB_INVENTORY", database_.address()},
                                            {"ZYMDB_ENGINES", ZYMDB_TEST_ENGINES},
                                            {"ZYMDB_LOG", "stderr"}}});
  }
  // Those that no writer holds.
  std::string free_schemas() const {
    return database_.run("SELECT Name FROM zymdb_schemas FOR UPDATE SKIP LOCKED");
  }
  void wait_for_a_writer(const std::string& free_before) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (free_schemas() == free_before) {
      if (std::chrono::steady_clock::now() > end) throw std::runtime_error("the import does not begin");
      usleep(5000);
    }
  }

  TestDatabase database_;
  TemporaryFolder folder_;
  ParsingMarker marker_;
};

// Each holds what the other one waits for: the server ends the import's transaction.
TEST_P(OvertakenImport, IsMadeAgainAndOnce) {
  const Outcome made = import(GetParam().nothing);
  ASSERT_EQ(made.status, 0) << made;
  const std::string free = free_schemas();
  Rival rival(database_);
  rival.run(std::string("SELECT * FROM ") + GetParam().table + " FOR UPDATE");
  std::future<Outcome> overtaken = std::async(std::launch::async, [&] { return import(GetParam().content); });
  wait_for_a_writer(free);
  rival.run("SELECT * FROM zymdb_schemas FOR UPDATE");
  rival.run("ROLLBACK");
  const Outcome outcome = overtaken.get();
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_EQ(outcome.out, GetParam().said);
  EXPECT_THAT(outcome.err, HasSubstr("Deadlock found"));
  EXPECT_EQ(database_.run(std::string("SELECT COUNT(*) FROM ") + GetParam().table), "2\n");
}

const Import kImports[] = {
    {"Settings",
     {"settings", "import"},
     "PCISetting",
     R"([{"SettingID": "A", "PfaKey": 1}, {"SettingID": "B", "PfaKey": 1}])",
     "[]",
     "2 settings stored\n"},
    {"Properties",
     {"properties", "import"},
     "propertiesDCTbl",
     "/first byte 1\n/second dword 2\n",
     "",
     "2 properties stored\n"},
};

INSTANTIATE_TEST_SUITE_P(Kinds, OvertakenImport, testing::ValuesIn(kImports),
                         [](const auto& import) { return std::string(import.param.name); });

}  // namespace
}  // namespace zymdb::test
