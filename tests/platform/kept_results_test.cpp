// Results that are kept, without a database: which are found again, and how much memory they take.
#include "client/engine/sqlite/kept_results.h"

#include <gtest/gtest.h>

#include <memory>

namespace zymdb::client::sqlite {
namespace {

constexpr size_t kRoom = 64 * 1024;

WalHeader header(unsigned char commit) {
  WalHeader header{};
  header[1] = commit;
  return header;
}

Argument integer(int64_t value) {
  Argument argument;
  argument.type = Argument::Type::kInteger;
  argument.integer = value;
  return argument;
}

Argument real(double value) {
  Argument argument;
  argument.type = Argument::Type::kReal;
  argument.real = value;
  return argument;
}

Argument text(Argument::Type type, const char* value) {
  Argument argument;
  argument.type = type;
  argument.text = value;
  return argument;
}

Result row_of(const std::string& value) {
  Result result;
  result.start(std::make_shared<const NamedColumns>(std::vector<std::string>(1, "Value")), size_t{1} << 20);
  EXPECT_TRUE(result.begin_row());
  EXPECT_TRUE(result.add_text(value));
  result.end_row();
  return result;
}

std::string value_of(Result& result) {
  std::string text(size_t{1} << 16, 0);
  if (result.row_count() != 1 || result.step() != ZYM_DB_STATUS_ROW) return "no row";
  if (result.read_text(result.find("Value"), text.data(), text.size()) != 0) return "no value";
  return text.c_str();
}

class KeptResultsTest : public testing::Test {
 protected:
  KeptResultsTest() { kept_.look(header(1)); }

  // What a statement that answers `answer` comes back with.
  static std::string ask(KeptResults& kept, uint64_t statement, const std::vector<Argument>& arguments,
                         const std::string& answer) {
    Result found;
    if (kept.find(statement, arguments, found)) return value_of(found);
    has_room_ = kept.offer(row_of(answer));
    return "asked: " + answer;
  }
  std::string ask(uint64_t statement, const std::vector<Argument>& arguments, const std::string& answer) {
    return ask(kept_, statement, arguments, answer);
  }
  bool is_kept(KeptResults& kept, uint64_t statement) {
    Result found;
    return kept.find(statement, {}, found);
  }
  void keep(KeptResults& kept, uint64_t statement, size_t size) {
    for (int time = 0; time < 2; ++time) ask(kept, statement, {}, std::string(size, 'x'));
  }

  inline static bool has_room_ = true;
  KeptResults kept_{kRoom};
};

TEST_F(KeptResultsTest, AreThoseOfStatementsThatCameTwice) {
  EXPECT_EQ(ask(1, {}, "first"), "asked: first");
  EXPECT_EQ(kept_.size(), 0U);
  EXPECT_EQ(ask(1, {}, "second"), "asked: second");
  EXPECT_EQ(ask(1, {}, "third"), "second");
  EXPECT_EQ(ask(1, {}, "fourth"), "second");
}

// As where a service reads two results of each of a thousand functions, over and over.
TEST_F(KeptResultsTest, AreThoseOfStatementsBetweenWhichThousandsOfOthersCame) {
  constexpr int64_t kStatements = 2000;
  KeptResults kept(size_t{16} << 20);
  kept.look(header(1));
  for (int time = 0; time < 2; ++time)
    for (int64_t i = 0; i < kStatements; ++i) ask(kept, 1, {integer(i)}, "answer");
  int again = 0;
  for (int64_t i = 0; i < kStatements; ++i) again += ask(kept, 1, {integer(i)}, "answer") == "answer";
  EXPECT_GT(again, kStatements * 95 / 100);
}

TEST_F(KeptResultsTest, BelongToAStatementWithItsArguments) {
  const std::vector<std::vector<Argument>> all = {
      {},
      {integer(1)},
      {integer(2)},
      {real(1)},
      {text(Argument::Type::kText, "1")},
      {text(Argument::Type::kBlob, "1")},
      {text(Argument::Type::kText, "")},
      {Argument{}},
      {Argument{}, Argument{}},
      {text(Argument::Type::kText, "ab"), text(Argument::Type::kText, "c")},
      {text(Argument::Type::kText, "a"), text(Argument::Type::kText, "bc")},
      {integer(1), integer(2)},
      {integer(2), integer(1)},
  };
  for (int time = 0; time < 3; ++time) {
    for (uint64_t statement = 1; statement <= 2; ++statement) {
      for (size_t i = 0; i < all.size(); ++i) {
        const std::string answer = std::to_string(statement) + "-" + std::to_string(i);
        EXPECT_EQ(ask(statement, all[i], answer), time < 2 ? "asked: " + answer : answer);
      }
    }
  }
}

TEST_F(KeptResultsTest, GoWithTheHeaderTheyWereReadUnder) {
  keep(kept_, 1, 10);
  ASSERT_TRUE(is_kept(kept_, 1));
  kept_.look(header(1));
  EXPECT_TRUE(is_kept(kept_, 1));
  kept_.look(header(2));
  EXPECT_FALSE(is_kept(kept_, 1));
  EXPECT_EQ(kept_.size(), 0U);
  kept_.look(header(1));
  EXPECT_FALSE(is_kept(kept_, 1));
}

TEST_F(KeptResultsTest, AreNotThoseThatCameOnceBeforeAndOnceAfterACommit) {
  ask(1, {}, "before");
  kept_.look(header(2));
  ask(1, {}, "after");
  EXPECT_EQ(ask(1, {}, "again"), "asked: again");
  EXPECT_EQ(ask(1, {}, "later"), "again");
}

TEST_F(KeptResultsTest, TakeNoMoreThanTheirRoomAndTheLeastRecentlyUsedGivesWay) {
  for (uint64_t statement = 1; statement <= 6; ++statement) keep(kept_, statement, 10'000);
  EXPECT_LE(kept_.size(), kRoom);
  EXPECT_GE(kept_.size(), kRoom - 11'000);
  EXPECT_TRUE(is_kept(kept_, 1));
  keep(kept_, 7, 10'000);
  EXPECT_TRUE(is_kept(kept_, 1));
  EXPECT_FALSE(is_kept(kept_, 2));
  EXPECT_TRUE(is_kept(kept_, 7));
  EXPECT_LE(kept_.size(), kRoom);
}

TEST_F(KeptResultsTest, AreNoneThatWouldTakeMoreThanHalfOfTheRoom) {
  keep(kept_, 1, 1000);
  keep(kept_, 2, kRoom / 2);
  EXPECT_FALSE(is_kept(kept_, 2));
  EXPECT_TRUE(is_kept(kept_, 1));
}

TEST_F(KeptResultsTest, ShareTheRoomWithThoseOfOtherConnections) {
  for (uint64_t statement = 1; statement <= 6; ++statement) keep(kept_, statement, 10'000);
  KeptResults other(kRoom);
  other.look(header(1));
  keep(other, 1, 10'000);
  EXPECT_FALSE(has_room_);
  EXPECT_FALSE(is_kept(other, 1));

  kept_.shrink();
  EXPECT_LE(kept_.size(), kRoom / 2);
  EXPECT_TRUE(is_kept(kept_, 6));
  for (uint64_t statement = 1; statement <= 6; ++statement) keep(other, statement, 10'000);
  EXPECT_TRUE(is_kept(other, 6));
  EXPECT_FALSE(is_kept(other, 1));
  EXPECT_LE(kept_.size() + other.size(), kRoom);
}

TEST_F(KeptResultsTest, GiveTheirRoomBackWhenTheirConnectionEnds) {
  auto other = std::make_unique<KeptResults>(kRoom);
  other->look(header(1));
  for (uint64_t statement = 1; statement <= 6; ++statement) keep(*other, statement, 10'000);
  keep(kept_, 1, 10'000);
  EXPECT_FALSE(is_kept(kept_, 1));
  other.reset();
  for (uint64_t statement = 1; statement <= 6; ++statement) keep(kept_, statement, 10'000);
  EXPECT_TRUE(is_kept(kept_, 1));
}

}  // namespace
}  // namespace zymdb::client::sqlite
