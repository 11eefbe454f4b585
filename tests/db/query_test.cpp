// The pieces that every operation is made of.
#include "db/query.h"

#include <gmock/gmock.h>

#include "db/code_text.h"
#include "db/rows.h"
#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;

namespace zymdb {
namespace {

struct Record {
  uint8_t byte;
  uint16_t word;
  uint32_t number;
  uint64_t wide;
  char text[5];
};

constexpr auto kColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, byte),
    ZYMDB_COLUMN("w", Record, word, 9),
    ZYMDB_OWN_COLUMN("own"),
    ZYMDB_FIELD(Record, number),
    ZYMDB_FIELD(Record, wide),
    ZYMDB_FIELD(Record, text),
});

class QueryTest : public scripted::ClientTest {};

TEST_F(QueryTest, ATableOfColumnsIsTheColumnListAndFillsTheRecord) {
  answer({Row(0x1FF, 0x12345, "own", -1, int64_t{1} << 40, "abcdef")});
  Record record{};
  {
    Query query(get_dmdb_handle(), "T", kColumns, "x=1");
    ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
    query.read_columns(kColumns, &record);
  }
  EXPECT_EQ(client().statements.front(), "query T [byte,w,own,number,wide,text] where x=1");
  EXPECT_EQ(record.byte, 0xFF);
  EXPECT_EQ(record.word, 0x2345);
  EXPECT_EQ(record.number, 0xFFFFFFFFu);
  EXPECT_EQ(record.wide, uint64_t{1} << 40);
  EXPECT_STREQ(record.text, "abcd");
}

#pragma pack(push, 1)
struct Packed {
  uint8_t byte;
  uint16_t word;
  uint32_t number;
  uint64_t wide;
};
#pragma pack(pop)

TEST_F(QueryTest, AColumnListMayBeReadFromItsMiddleIntoAPackedRecord) {
  constexpr auto kPacked = columns_of<Packed>({ZYMDB_FIELD(Packed, byte), ZYMDB_FIELD(Packed, word),
                                               ZYMDB_FIELD(Packed, number), ZYMDB_FIELD(Packed, wide)});
  answer({Row(1, 2, 3, int64_t{1} << 40)});
  Packed record{9, 0, 0, 0};
  Query query(get_dmdb_handle(), "T", kPacked, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  query.read_columns(Columns(kPacked).part(1, 4), &record, 1);
  EXPECT_EQ(record.byte, 9);
  EXPECT_EQ(uint16_t{record.word}, 2);
  EXPECT_EQ(uint32_t{record.number}, 3u);
  EXPECT_EQ(uint64_t{record.wide}, uint64_t{1} << 40);
}

TEST_F(QueryTest, ANumberInTextIsCutToItsFieldAndHasADefaultOfItsOwn) {
  constexpr auto kCodes = columns_of<Record>({ZYMDB_NUMBER_IN_TEXT("b", Record, byte, 4),
                                              ZYMDB_NUMBER_IN_TEXT("w", Record, word, 4),
                                              ZYMDB_NUMBER_IN_TEXT("n", Record, number, 4)});
  answer({Row("0x101", "0x8005", "010"), Row(1, nullptr, "text")});
  Record record{};
  Query query(get_dmdb_handle(), "T", kCodes, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  query.read_columns(kCodes, &record);
  EXPECT_EQ(record.byte, 1);
  EXPECT_EQ(record.word, 0x8005);
  EXPECT_EQ(record.number, 8u);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  query.read_columns(kCodes, &record);
  EXPECT_EQ(record.byte, 4);
  EXPECT_EQ(record.word, 4);
  EXPECT_EQ(record.number, 0u);
}

TEST_F(QueryTest, UnreadableColumnsGiveTheirDefaults) {
  answer({Row(nullptr, "text", nullptr, nullptr, nullptr, 5)});
  Record record{1, 1, 1, 1, "old"};
  Query query(get_dmdb_handle(), "T", kColumns, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  query.read_columns(kColumns, &record);
  EXPECT_EQ(record.byte, 0);
  EXPECT_EQ(record.word, 9);
  EXPECT_EQ(record.number, 0u);
  EXPECT_EQ(record.wide, 0u);
  EXPECT_STREQ(record.text, "");
}

constexpr auto kRequired = columns_of<Record>({
    ZYMDB_REQUIRED(Record, byte),
    ZYMDB_OWN_COLUMN("own"),
    ZYMDB_REQUIRED(Record, word),
    ZYMDB_REQUIRED_COLUMN("t", Record, text),
    ZYMDB_REQUIRED(Record, number),
    ZYMDB_REQUIRED(Record, wide),
});

TEST_F(QueryTest, RequiredColumnsAreReadInTheirOwnWidth) {
  answer({Row(1, "own", 2, "text", 3, 4)});
  Query query(get_dmdb_handle(), "T", kRequired, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  client().calls.clear();
  Record record{};
  EXPECT_TRUE(query.read_columns(kRequired, &record));
  EXPECT_THAT(client().calls, ElementsAre("uchar 0", "short_uint 2", "text 3 size 5", "uint 4", "uint64 5"));
  EXPECT_EQ(record.word, 2);
  EXPECT_STREQ(record.text, "text");
  EXPECT_EQ(record.wide, 4u);
}

TEST_F(QueryTest, NothingIsReadAfterARequiredColumnThatCannotBe) {
  answer({Row(1, "own", nullptr, "text", 3, 4)});
  Query query(get_dmdb_handle(), "T", kRequired, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  client().calls.clear();
  Record record{9, 9, 9, 9, "old"};
  EXPECT_FALSE(query.read_columns(kRequired, &record));
  EXPECT_THAT(client().calls, ElementsAre("uchar 0", "short_uint 2"));
  EXPECT_EQ(record.byte, 1);
  EXPECT_EQ(record.word, 9);
  EXPECT_STREQ(record.text, "old");
}

TEST_F(QueryTest, AFailedQueryHasNoRowsAndFreesTheResultThatCameWithIt) {
  answer(Answer{.status = 77, .has_result = true, .rows = {Row(1)}});
  Query query(get_dmdb_handle(), "T", {"a"}, nullptr);
  EXPECT_EQ(query.status(), 77);
  EXPECT_FALSE(query.has_result());
  EXPECT_EQ(query.row_count(), 0u);
  EXPECT_EQ(query.step(), ZYM_DB_STATUS_DONE);
}

TEST_F(QueryTest, AQueryWithoutAResultHasNoRows) {
  answer(Answer::without_result());
  Query query(get_dmdb_handle(), "T", {"a"}, nullptr);
  EXPECT_EQ(query.status(), ZYM_DB_STATUS_OK);
  EXPECT_FALSE(query.has_result());
  EXPECT_EQ(query.step(), ZYM_DB_STATUS_DONE);
}

TEST_F(QueryTest, ParametersCarryTheirWidth) {
  answer(std::vector<Row>{});
  answer(std::vector<Row>{});
  Query(get_dmdb_handle(), "T", {"a"}, "a=?", parameter(uint16_t{65535}));
  Query(get_dmdb_handle(), "T", kColumns, "a=?", parameter(uint32_t{0xFFFFFFFF}));
  EXPECT_EQ(client().statements[0], "query T [a] where a=? with 2/0/1:65535");
  EXPECT_EQ(client().statements[1], "query T [byte,w,own,number,wide,text] where a=? with 3/0/1:4294967295");
}

struct NumberInText {
  const char* text;
  unsigned long number;

  friend void PrintTo(const NumberInText& in, std::ostream* stream) {
    *stream << "\"" << in.text << "\" is " << in.number;
  }
};

class NumberInTextTest : public scripted::ClientTest, public testing::WithParamInterface<NumberInText> {};

TEST_P(NumberInTextTest, IsReadInTheBaseThatItsPrefixTells) {
  answer({Row(GetParam().text)});
  Query query(get_dmdb_handle(), "T", {"a"}, nullptr);
  ASSERT_EQ(query.step(), ZYM_DB_STATUS_ROW);
  unsigned long number = 1;
  EXPECT_EQ(query.read_number_in_text(0, number), ZYM_DB_STATUS_OK);
  EXPECT_EQ(number, GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(Texts, NumberInTextTest,
                         testing::Values(NumberInText{"18", 18}, NumberInText{"0x12", 18},
                                         NumberInText{"022", 18}, NumberInText{"0xB6", 0xB6},
                                         NumberInText{"0x8005", 0x8005}, NumberInText{"0xFFFF", 0xFFFF},
                                         NumberInText{"0X8005", 0x8005}, NumberInText{"0XB6", 0xB6},
                                         NumberInText{"65535", 65535}, NumberInText{"1234567", 12345},
                                         NumberInText{"", 0}, NumberInText{"none", 0},
                                         NumberInText{"7 up", 7}));

TEST_F(QueryTest, ANumberInTextIsReadSixBytesWideAndALongHexadecimalOnceMore) {
  answer({Row("0x8005", "12345")});
  Query query(get_dmdb_handle(), "T", {"a", "b"}, nullptr);
  query.step();
  client().calls.clear();
  unsigned long number = 0;
  query.read_number_in_text(0, number);
  query.read_number_in_text(1, number);
  EXPECT_THAT(client().calls, ElementsAre("text 0 size 6", "text 0 size 8", "text 1 size 6"));
}

TEST_F(QueryTest, AnUnreadableNumberInTextLeavesTheNumber) {
  answer({Row(nullptr)});
  Query query(get_dmdb_handle(), "T", {"a"}, nullptr);
  query.step();
  unsigned long number = 5;
  EXPECT_EQ(query.read_number_in_text(0, number), ZYM_DB_STATUS_ERROR);
  EXPECT_EQ(number, 5u);
}

class RowsTest : public scripted::ClientTest {
 protected:
  // Lists column 0 of the prepared rows; odd numbers are left out.
  int list_even() {
    Query query(get_dmdb_handle(), "T", {"a"}, nullptr);
    return list_rows(query, allocate_array<uint32_t>, count_, numbers_, [&](uint32_t& number) {
      return query.read(0, number) == ZYM_DB_STATUS_OK && number % 2 == 0;
    });
  }
  ~RowsTest() override { std::free(numbers_); }

  uint32_t count_ = 0;
  uint32_t* numbers_ = nullptr;
};

TEST_F(RowsTest, RowsThatAreLeftOutLeaveNoGap) {
  answer({Row(2), Row(3), Row(nullptr), Row(4)});
  EXPECT_EQ(list_even(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(std::vector(numbers_, numbers_ + count_), ElementsAre(2, 4));
}

TEST_F(RowsTest, NeverMoreThanTheRowCountIsStored) {
  answer(Answer{.rows = {Row(2), Row(4), Row(6)}, .row_count = 2});
  EXPECT_EQ(list_even(), ZYM_DB_STATUS_OK);
  EXPECT_THAT(std::vector(numbers_, numbers_ + count_), ElementsAre(2, 4));
}

TEST_F(RowsTest, AFailedStepLeavesTheListEmpty) {
  answer(Answer{.rows = {Row(2)}, .end = 77, .row_count = 3});
  EXPECT_EQ(list_even(), 77);
  EXPECT_EQ(count_, 0u);
  EXPECT_EQ(numbers_, nullptr);
}

TEST_F(RowsTest, WithoutMemoryNothingIsListed) {
  answer(Answer{.row_count = 0xFFFFFFFF});
  EXPECT_EQ(list_even(), ZYM_DB_STATUS_NO_MEMORY);
  EXPECT_EQ(numbers_, nullptr);
}

TEST(AllocateArray, ACountWhoseSizeOverflowsIsRefused) {
  EXPECT_EQ(allocate_array<uint64_t>(SIZE_MAX / 2), nullptr);
}

TEST(FilterTest, IsCutAtItsBuffer) {
  const Filter<16> filter("Location=%d AND SlotNo=%d", 1, 2);
  EXPECT_STREQ(filter, "Location=1 AND ");
}

TEST_F(QueryTest, OnlyAFilterThatWasCutIsSaidToBe) {
  log_if_cut(Filter<11>("Location=%d", 1));
  EXPECT_THAT(client().log, testing::IsEmpty());
  log_if_cut(Filter<10>("Location=%d", 1));
  EXPECT_THAT(client().log, ElementsAre("error: the filter was cut at 9 bytes"));
}

TEST(CodeTextTest, ALongTextIsCutAndAShortOnePadded) {
  char field[8];
  std::memset(field, 'x', sizeof field);
  copy_text(field, "abc");
  EXPECT_EQ(std::string_view(field, 8), std::string_view("abc\0\0\0\0\0", 8));
  copy_text(field, "abcdefghij");
  EXPECT_STREQ(field, "abcdefg");
}

TEST_F(QueryTest, ANumberIsSelectedFromTheFirstRowAndTheStatusSaysWhyThereIsNone) {
  const std::tuple<Answer, uint32_t, int> cases[] = {
      {Answer::of({Row(0xFFFFFFFF), Row(2)}), 0xFFFFFFFF, ZYM_DB_STATUS_OK},
      {Answer::of({Row(0)}), 0, ZYM_DB_STATUS_OK},
      {Answer::of({Row(nullptr)}), 0, ZYM_DB_STATUS_ERROR},
      {Answer{}, 0, ZYM_DB_STATUS_DONE},
      {Answer{.end = 77}, 0, 77},
      {Answer::without_result(), 0, ZYM_DB_STATUS_OK},
      {Answer::failing(77, true), 0, 77}};
  for (const auto& [each, number, status] : cases) {
    answer(each);
    int told = -1;
    EXPECT_EQ(select_number(get_dmdb_handle(), Statement<32>("select %s", "x"), told), number);
    EXPECT_EQ(told, status);
  }
  EXPECT_EQ(client().statements.front(), "raw_query select x size 32");
}

}  // namespace
}  // namespace zymdb
