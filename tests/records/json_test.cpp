// Records as JSON, byte by byte.
#include "records/json.h"

#include <gtest/gtest.h>

namespace zymdb::records {
namespace {

FieldInfo field(const char* key, unsigned hex_digits = 0) {
  FieldInfo info{.key = key, .heading = "", .meaning = ""};
  info.hex_digits = hex_digits;
  return info;
}

std::string value_in_json(const FieldInfo& info, const Value& value) {
  const auto text = to_json("parts", {.fields = {info}, .rows = {{{value}}}});
  const std::string before = "{\n  \"format_version\": 2,\n  \"parts\": [\n    {\n      \"Key\": ";
  const std::string after = "\n    }\n  ]\n}\n";
  EXPECT_TRUE(text.starts_with(before) && text.ends_with(after)) << text;
  return text.substr(before.size(), text.size() - before.size() - after.size());
}

TEST(Json, OfNoRecordsIsAnEmptyArray) {
  EXPECT_EQ(to_json("parts", {}), "{\n  \"format_version\": 2,\n  \"parts\": []\n}\n");
}

TEST(Json, HasNullForWhatIsNotKnown) {
  EXPECT_EQ(value_in_json(field("Key"), Value()), "null");
  EXPECT_EQ(value_in_json(field("Key", 16), Value()), "null");
}

TEST(Json, HasNumbersAsNumbers) {
  EXPECT_EQ(value_in_json(field("Key"), Value(uint64_t{0})), "0");
  EXPECT_EQ(value_in_json(field("Key"), Value(int64_t{-7})), "-7");
  EXPECT_EQ(value_in_json(field("Key", 8), Value(uint64_t{0xffffffff})), "4294967295");
}

TEST(Json, HasIdentifiersOfMoreThan53BitsAsTexts) {
  EXPECT_EQ(value_in_json(field("Key", 16), Value(uint64_t{0xbfebfbff00050657})), "\"0xbfebfbff00050657\"");
  EXPECT_EQ(value_in_json(field("Key", 16), Value(uint64_t{1})), "\"0x0000000000000001\"");
}

TEST(Json, HasTextsInUtf8) {
  EXPECT_EQ(value_in_json(field("Key"), Value("a \"b\" \\ \n")), R"("a \"b\" \\ \n")");
  EXPECT_EQ(value_in_json(field("Key"), Value("caf\xc3\xa9")), "\"caf\xc3\xa9\"");
  EXPECT_EQ(value_in_json(field("Key"), Value("bad \xff")), "\"bad \xef\xbf\xbd\"");
}

}  // namespace
}  // namespace zymdb::records
