// Fields of a record: when they are known, how they are found by name, how they are written.
#include "records/record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace zymdb::records {
namespace {

using testing::ElementsAre;

struct Part {
  uint32_t Number = 0;
  char Name[8] = "";
  bool is_there = true;
};

bool is_there(const Part& part) {
  return part.is_there;
}

constexpr Field<Part> kNumber = ZYMDB_RECORD_FIELD(Part, Number, "NUMBER", "a number");
constexpr Field<Part> kName = ZYMDB_RECORD_FIELD(Part, Name, "NAME", "a name");

TEST(FieldValue, IsTheMembers) {
  EXPECT_EQ(kNumber.value({.Number = 7}), Value(uint64_t{7}));
  EXPECT_EQ(kNumber.value({}), Value(uint64_t{0}));
  EXPECT_EQ(kName.value({.Name = "a"}), Value("a"));
  EXPECT_EQ(kName.value({}), Value());
}

TEST(FieldValue, IsUnknownAtTheNumberThatStandsForIt) {
  constexpr auto field = kNumber.unknown_at(255);
  EXPECT_EQ(field.value({.Number = 255}), Value());
  EXPECT_EQ(field.value({.Number = 0}), Value(uint64_t{0}));
  constexpr auto never_zero = kNumber.zero_is_unknown();
  EXPECT_EQ(never_zero.value({}), Value());
  EXPECT_EQ(never_zero.value({.Number = 255}), Value(uint64_t{255}));
}

TEST(FieldValue, IsUnknownAtTheTextThatStandsForIt) {
  constexpr auto field = kName.unknown_at("Unknown");
  EXPECT_EQ(field.value({.Name = "Unknown"}), Value());
  EXPECT_EQ(field.value({.Name = "Unknow"}), Value("Unknow"));
}

TEST(FieldValue, IsUnknownWhereItsConditionDoesNotHold) {
  constexpr auto field = kNumber.known_if(is_there);
  EXPECT_EQ(field.value({.Number = 7, .is_there = false}), Value());
  EXPECT_EQ(field.value({.Number = 7}), Value(uint64_t{7}));
}

struct StoredPart : Part {
  std::map<std::string, Value> row;
  const Value* stored(const char* column) const {
    const auto found = row.find(column);
    return found == row.end() ? nullptr : &found->second;
  }
};

TEST(FieldValue, OfARecordWithItsRowIsWhatIsStored) {
  constexpr Field<StoredPart> number = ZYMDB_RECORD_FIELD(StoredPart, Number, "NUMBER", "a number");
  StoredPart part;
  part.Number = 128;
  EXPECT_EQ(number.value(part), Value(uint64_t{128})) << "without a column the field counts";
  part.row["Number"] = uint64_t{384};
  EXPECT_EQ(number.value(part), Value(uint64_t{384}));
  EXPECT_EQ(number.unknown_at(384).value(part), Value());
  part.row["Number"] = Value();
  EXPECT_EQ(number.value(part), Value());
}

TEST(FieldValue, OfADerivedFieldIsNeverAColumn) {
  const auto field =
      derived<StoredPart>("Number", "NUMBER", "a number", [](const StoredPart&) { return Value("derived"); });
  StoredPart part;
  part.row["Number"] = uint64_t{384};
  EXPECT_EQ(field.value(part), Value("derived"));
}

// "Level" in words has the heading that people ask for; the code's key is the same word.
constexpr Field<Part> kFields[] = {
    ZYMDB_RECORD_FIELD(Part, Number, "LEVELCODE", "a number").number(),
    ZYMDB_RECORD_FIELD(Part, Name, "NUMBER", "a name").shown(),
};

RecordType parts() {
  return describe<Part>("parts", "Parts", kFields,
                        [] { return std::vector<Part>{{.Number = 7, .Name = "a"}}; });
}

TEST(FindField, TakesHeadingsAndKeysInAnyCase) {
  const auto type = parts();
  EXPECT_EQ(find_field(type, "levelcode"), 0u);
  EXPECT_EQ(find_field(type, "Name"), 1u);
  EXPECT_EQ(find_field(type, "NAME"), 1u);
  EXPECT_EQ(find_field(type, "nothing"), std::nullopt);
  EXPECT_EQ(find_field(type, ""), std::nullopt);
}

TEST(FindField, PrefersAHeadingToAKey) {
  EXPECT_EQ(find_field(parts(), "NUMBER"), 1u);
  EXPECT_EQ(find_field(parts(), "number"), 1u);
}

TEST(FindField, FindsEveryNameAsItIsPrinted) {
  EXPECT_EQ(find_field(parts(), "Number"), 0u);
  EXPECT_EQ(find_field(parts(), "LEVELCODE"), 0u);
}

TEST(Selections, AreAllFieldsOrThoseThatAreShown) {
  EXPECT_THAT(all_fields(parts()), ElementsAre(0, 1));
  EXPECT_THAT(default_fields(parts()), ElementsAre(1));
}

TEST(Sheet, HasTheSelectedFieldsInTheirOrder) {
  const auto sheet = parts().list({1, 0, 1});
  ASSERT_EQ(sheet.fields.size(), 3u);
  EXPECT_STREQ(sheet.fields[0].heading, "NUMBER");
  ASSERT_EQ(sheet.rows.size(), 1u);
  EXPECT_EQ(sheet.rows[0][0].value, Value("a"));
  EXPECT_EQ(sheet.rows[0][1].value, Value(uint64_t{7}));
  EXPECT_EQ(sheet.rows[0][2].value, Value("a"));
}

TEST(TextOf, WritesNumbersAsTheFieldSays) {
  FieldInfo plain{.key = "a", .heading = "A", .meaning = ""};
  FieldInfo hex = plain;
  hex.hex_digits = 4;
  EXPECT_EQ(text_of(plain, Value()), "");
  EXPECT_EQ(text_of(plain, Value("text")), "text");
  EXPECT_EQ(text_of(plain, Value(int64_t{-5})), "-5");
  EXPECT_EQ(text_of(plain, Value(UINT64_MAX)), "18446744073709551615");
  EXPECT_EQ(text_of(hex, Value(uint64_t{0x2f})), "0x002f");
  EXPECT_EQ(text_of(hex, Value(uint64_t{0x12345})), "0x12345");
  hex.hex_digits = 16;
  EXPECT_EQ(text_of(hex, Value(UINT64_MAX)), "0xffffffffffffffff");
}

}  // namespace
}  // namespace zymdb::records
