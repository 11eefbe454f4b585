#include "common/text.h"

#include <gtest/gtest.h>

namespace zymdb::collect {
namespace {

// In ascending order.
TEST(NaturalOrder, TakesRunsOfDigitsForNumbers) {
  const char* const kAscending[] = {
      "",
      "1",
      "1.2",
      "1.9",
      "1.10",
      "1.10-rc1",
      "1.10.1",
      "1.10a",
      "2",
      "10",
      "99999999999999999999999",
      "100000000000000000000000",
      "Bay 2",
      "bay 10",
      "bay 10 left",
      "GDC5302Q",
      "GDC5602Q",
      "v0x1a",
      "x",
  };
  for (size_t i = 0; i < std::size(kAscending); ++i) {
    for (size_t j = 0; j < std::size(kAscending); ++j) {
      EXPECT_TRUE(natural_order(kAscending[i], kAscending[j]) == (i <=> j))
          << kAscending[i] << " and " << kAscending[j];
    }
  }
}

TEST(NaturalOrder, TakesDigitsAfterAZeroAndAnXForHexadecimalOnes) {
  EXPECT_TRUE(natural_order("8.30 0x80019fff", "8.30 0x8001a000") < 0);
  EXPECT_TRUE(natural_order("0x19", "0x1a") < 0);
  EXPECT_TRUE(natural_order("0xff", "0x100") < 0);
  EXPECT_TRUE(natural_order("0x00FF", "0xff") == 0);
  EXPECT_TRUE(natural_order("0xyz", "1xyz") < 0);
}

TEST(NaturalOrder, TakesCaseBlanksAroundAndLeadingZerosForNoDifference) {
  EXPECT_TRUE(natural_order(" 1.0 ", "1.0") == 0);
  EXPECT_TRUE(natural_order("BAY 07", "bay 7") == 0);
  EXPECT_TRUE(natural_order("1.00", "1.0") == 0);
  EXPECT_TRUE(natural_order("1.0", "1.0.0") < 0);
}

TEST(ValidUtf8, ReplacesWhatIsNone) {
  EXPECT_EQ(valid_utf8("\xc3\xbc \xff cut \xe2\x82"), "\xc3\xbc \xEF\xBF\xBD cut \xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(valid_utf8(""), "");
}

TEST(KnownText, TakesWhatFirmwareLeavesUnfilledForUnknown) {
  for (const char* text : {"",
                           " ",
                           "\t",
                           "To Be Filled By O.E.M.",
                           "TO BE FILLED BY O.E.M.",
                           "Default string",
                           "Not Specified",
                           "--",
                           "-",
                           "..........",
                           ". . . .",
                           "N/A",
                           "Unknown",
                           "UNKNOWN",
                           "None",
                           "0000",
                           "\xff\xff\xff",
                           "***",
                           "  Not Specified  ",
                           "xxxxxxxx"}) {
    EXPECT_FALSE(known_text(text)) << '"' << text << '"';
  }
}

TEST(KnownText, KeepsWhatLooksLikeAPlaceholderButIsNot) {
  for (const char* text : {"0", "X", "A-1", "1.20", "None of them", "00001", "Slot -1", "FFFF"}) {
    EXPECT_EQ(known_text(text), text);
  }
}

TEST(KnownText, TrimsAndMakesTextsPrintable) {
  EXPECT_EQ(known_text("  NMA1XXD128GPS       "), "NMA1XXD128GPS");
  EXPECT_EQ(known_text(std::string_view("abc\0def", 7)), "abc");
  EXPECT_EQ(known_text("a\tb\x01"
                       "c"),
            "a?b?c");
  EXPECT_EQ(known_text("caf\xc3\xa9 \xe9"), "caf\xc3\xa9 ?");
  EXPECT_EQ(known_text("\xed\xa0\x80 \xc0\xaf \xf4\x90\x80\x80 x"), "??? ?? ???? x");
  EXPECT_EQ(known_text("say \"hi\""), "say \"hi\"");
}

TEST(Cut, NeverEndsInsideACharacter) {
  EXPECT_EQ(cut("abc", 5), "abc");
  EXPECT_EQ(cut("abc", 2), "ab");
  EXPECT_EQ(cut("a\xc3\xa9", 2), "a");
  EXPECT_EQ(cut("a\xc3\xa9", 3), "a\xc3\xa9");
}

TEST(LeadingNumber, ReadsDecimalAndHexadecimal) {
  EXPECT_EQ(leading_number("0x8086\n"), 0x8086U);
  EXPECT_EQ(leading_number("16\n"), 16U);
  EXPECT_EQ(leading_number("16 lanes"), 16U);
  EXPECT_FALSE(leading_number("-1\n"));
  EXPECT_FALSE(leading_number(""));
  EXPECT_FALSE(leading_number("0x"));
  EXPECT_FALSE(leading_number("99999999999999999999"));
}

TEST(HexText, HasAPrefixAndUpperCaseDigits) {
  EXPECT_EQ(hex_text(0xb6), "0xB6");
  EXPECT_EQ(hex_text(0), "0x0");
}

}  // namespace
}  // namespace zymdb::collect
