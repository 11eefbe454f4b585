#include "db/values.h"

#include <gmock/gmock.h>

#include "support/scripted_client.h"

using scripted::Answer;
using scripted::client;
using scripted::Row;
using testing::ElementsAre;
using testing::IsEmpty;

namespace zymdb {
namespace {

class ValuesTest : public scripted::ClientTest {};

TEST_F(ValuesTest, TheTypeOfAValuePicksThePut) {
  Values values(get_dmdb_handle());
  values.put("A", uint8_t{1});
  values.put("B", uint16_t{2});
  values.put("C", uint32_t{3});
  values.put("D", int32_t{-4});
  values.put("E", "five");
  EXPECT_EQ(values.insert("T"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements,
              ElementsAre("insert T {A=uchar:1, B=short_uint:2, C=uint:3, D=int:-4, E=text:five}"));
}

TEST_F(ValuesTest, AFailedPutKeepsTheSetFromBeingWritten) {
  client().failures[{"put", 1}] = 77;
  client().failures[{"put", 2}] = 78;
  Values values(get_dmdb_handle());
  for (const char* column : {"A", "B", "C"}) values.put(column, uint8_t{1});
  EXPECT_EQ(values.update("T", "a=1"), 77);
  EXPECT_EQ(values.insert("T"), 77);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(ValuesTest, AClearedSetIsWrittenAgain) {
  client().failures[{"put", 0}] = 77;
  Values values(get_dmdb_handle());
  values.put("A", uint8_t{1});
  values.clear();
  values.put("B", uint8_t{2});
  EXPECT_EQ(values.update("T", "a=1"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("update T {B=uchar:2} where a=1"));
}

#pragma pack(push, 1)
struct Packed {
  uint8_t byte;
  uint16_t word;
  uint32_t number;
  int32_t difference;
  char text[5];
  char none[5];
};
#pragma pack(pop)

constexpr auto kPacked = columns_of<Packed>({ZYMDB_FIELD(Packed, byte), ZYMDB_FIELD(Packed, word),
                                             ZYMDB_FIELD(Packed, number), ZYMDB_FIELD(Packed, difference),
                                             ZYMDB_COLUMN("t", Packed, text, 0), ZYMDB_FIELD(Packed, none)});

constexpr auto kWide = written(kPacked, Puts::kWide);
constexpr auto kWideOrNull = written(kPacked, Puts::kWideOrNull);
constexpr auto kAsFields = written(kPacked, Puts::kAsFields);
constexpr auto kInAnotherOrder = written(in_order(kPacked, {"none", "byte", "t"}), Puts::kWideOrNull);

TEST_F(ValuesTest, ATableOfColumnsPutsARecord) {
  const Packed record{1, 2, UINT32_MAX, -4, "five", ""};
  Values values(get_dmdb_handle());
  values.put_columns(kWideOrNull, &record);
  EXPECT_EQ(values.insert("T"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("insert T {byte=uint:1, word=uint:2, number=uint:4294967295, "
                                               "difference=int:-4, t=text:five, none=null:}"));
}

TEST_F(ValuesTest, ATableSaysHowItsFieldsArePut) {
  const Packed record{1, 2, 3, -4, "five", ""};
  const std::pair<WrittenColumns<Packed>, const char*> cases[] = {
      {kWide,
       "insert T {byte=uint:1, word=uint:2, number=uint:3, difference=int:-4, t=text:five, none=text:}"},
      {kAsFields,
       "insert T {byte=uchar:1, word=short_uint:2, number=uint:3, difference=int:-4, t=text:five, "
       "none=text:}"},
      {{}, "insert T {}"}};
  for (const auto& [columns, statement] : cases) {
    Values values(get_dmdb_handle());
    values.put_columns(columns, &record);
    EXPECT_EQ(values.insert("T"), ZYM_DB_STATUS_OK);
    EXPECT_EQ(client().statements.back(), statement);
  }
}

TEST_F(ValuesTest, ColumnsCanBePutInAnotherOrder) {
  const Packed record{1, 2, 3, 4, "five", "six"};
  Values values(get_dmdb_handle());
  values.put_columns(kInAnotherOrder, &record);
  EXPECT_EQ(values.insert("T"), ZYM_DB_STATUS_OK);
  EXPECT_THAT(client().statements, ElementsAre("insert T {none=text:six, byte=uint:1, t=text:five}"));
}

TEST_F(ValuesTest, InsertsOrUpdatesTheRowAtAnAddress) {
  Values values(get_dmdb_handle());
  values.put("A", uint8_t{1});
  client().answers = {Answer::of({Row(5)}), Answer{}};
  EXPECT_EQ(values.insert_or_update("T", "a=1", "A!=1"), 5);
  client().inserted_id = 6;
  EXPECT_EQ(values.insert_or_update("T", "a=1", "A!=1"), 6);
  EXPECT_THAT(client().statements,
              ElementsAre("query T [_id] where a=1", "update T {A=uchar:1} where _id=5 AND (A!=1)",
                          "query T [_id] where a=1", "insert T {A=uchar:1}"));
}

TEST_F(ValuesTest, AfterAFailedPutNothingIsLookedUp) {
  client().failures[{"put", 0}] = 77;
  Values values(get_dmdb_handle());
  values.put_or_null("A", "");
  EXPECT_EQ(values.insert_or_update("T", "a=1", nullptr), -1);
  EXPECT_THAT(client().statements, IsEmpty());
}

TEST_F(ValuesTest, WithoutMemoryThereIsNoSet) {
  client().has_values = false;
  EXPECT_FALSE(Values(get_dmdb_handle()));
}

}  // namespace
}  // namespace zymdb
