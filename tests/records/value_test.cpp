// Values of fields, and what is left of texts that were cut.
#include "records/value.h"

#include <gtest/gtest.h>

#include <climits>

namespace zymdb::records {
namespace {

TEST(WholeCharacters, EndBeforeACharacterThatWasCut) {
  struct Case {
    const char* text;
    const char* whole;
  } const cases[] = {
      {"", ""},
      {"plain", "plain"},
      {"caf\xc3\xa9", "caf\xc3\xa9"},
      {"caf\xc3", "caf"},
      {"\xe4\xb8\xad", "\xe4\xb8\xad"},
      {"a\xe4\xb8", "a"},
      {"a\xe4", "a"},
      {"\xf0\x9f\x94\xa7", "\xf0\x9f\x94\xa7"},
      {"a\xf0\x9f\x94", "a"},
      {"a\xf0\x9f", "a"},
      {"a\xf0", "a"},
      // No characters to begin with.
      {"a\xa9", "a\xa9"},
      {"a\x80\x80\x80\x80\x80", "a\x80\x80\x80\x80\x80"},
      {"\x80", "\x80"},
      {"a\xc0", "a\xc0"},
  };
  for (const auto& [text, whole] : cases) EXPECT_EQ(whole_characters(text), whole) << text;
}

TEST(ValueOf, ATextThatFillsItsFieldIsWithoutTheBrokenEnd) {
  const char full[6] = {'c', 'a', 'f', 'e', '\xc3', '\0'};
  EXPECT_EQ(value_of(full), Value("cafe"));
  const char unended[5] = {'c', 'a', 'f', 'e', 'x'};
  EXPECT_EQ(value_of(unended), Value("cafex"));
}

TEST(ValueOf, ATextWithRoomLeftIsAsItIs) {
  const char broken[8] = {'c', 'a', 'f', 'e', '\xc3', '\0', 'x', '\0'};
  EXPECT_EQ(value_of(broken), Value("cafe\xc3"));
}

TEST(ValueOf, AnEmptyTextIsNotKnown) {
  const char empty[4] = "";
  EXPECT_FALSE(is_known(value_of(empty)));
  EXPECT_FALSE(is_known(value_of(std::string())));
  EXPECT_TRUE(is_known(value_of(std::string("a"))));
}

TEST(ValueOf, NumbersKeepTheirSignAndWidth) {
  EXPECT_EQ(value_of(uint8_t{255}), Value(uint64_t{255}));
  EXPECT_EQ(value_of(uint16_t{65535}), Value(uint64_t{65535}));
  EXPECT_EQ(value_of(uint32_t{UINT32_MAX}), Value(uint64_t{UINT32_MAX}));
  EXPECT_EQ(value_of(uint64_t{UINT64_MAX}), Value(uint64_t{UINT64_MAX}));
  EXPECT_EQ(value_of(int32_t{INT_MIN}), Value(int64_t{INT_MIN}));
}

}  // namespace
}  // namespace zymdb::records
