#include "db/values.h"

#include <gmock/gmock.h>

#include "support/scripted_client.h"

using scripted::client;
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

TEST_F(ValuesTest, WithoutMemoryThereIsNoSet) {
  client().has_values = false;
  EXPECT_FALSE(Values(get_dmdb_handle()));
}

}  // namespace
}  // namespace zymdb
