// Texts that hardware and firmware wrote, whatever they hold, break neither the table nor the JSON.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/listing_case.h"
#include "tool/rows.h"
#include "zymdb_cpu_mem.h"

namespace zymdb::test {
namespace {

struct HostileText {
  std::string stored;
  std::string json;
  std::string cell;
};

const HostileText kTexts[] = {
    {"quote \" and \\ backslash", "quote \" and \\ backslash", "quote \" and \\ backslash"},
    {"bad \xff byte", "bad \xEF\xBF\xBD byte", "bad \\xff byte"},
    {"cut \xe2\x82", "cut \xEF\xBF\xBD", "cut \\xe2\\x82"},
    {"overlong \xc0\xaf", "overlong \xEF\xBF\xBD\xEF\xBF\xBD", "overlong \\xc0\\xaf"},
    {"\x1b[31mred", "\x1b[31mred", "\\x1b[31mred"},
    {"two\nlines", "two\nlines", "two\\x0alines"},
    {"a\ttab", "a\ttab", "a\\x09tab"},
    {"Prozessor \xc3\xbc \xe4\xb8\xad", "Prozessor \xc3\xbc \xe4\xb8\xad", "Prozessor \xc3\xbc \xe4\xb8\xad"},
    {"<b>&amp;</b>", "<b>&amp;</b>", "<b>&amp;</b>"},
};

TEST(HostileText, IsWholeInJsonAndHarmlessInTheTable) {
  const Workplace workplace;
  for (const auto& text : kTexts) insert_row(workplace, "Processor", {{"Version", text.stored}});
  const auto rows = records(workplace, listing("processors"));
  const auto cells = column(workplace, listing("processors"), "VERSION");
  ASSERT_EQ(rows.size(), std::size(kTexts));
  ASSERT_EQ(cells.size(), std::size(kTexts));
  for (size_t i = 0; i < cells.size(); ++i) {
    EXPECT_EQ(rows[i].at("Version"), kTexts[i].json);
    EXPECT_EQ(cells[i], kTexts[i].cell);
  }
}

// What its field has no room for is gone; half a character is no text.
TEST(HostileText, CutInsideACharacterLosesThatCharacter) {
  const Workplace workplace;
  constexpr size_t kRoom = sizeof _ZYMDB_Processor{}.Version - 1;
  const std::string character = "\xe4\xb8\xad";
  for (size_t before = kRoom - 3; before <= kRoom; ++before)
    insert_row(workplace, "Processor", {{"Version", std::string(before, 'v') + character + "more"}});
  const auto rows = records(workplace, listing("processors"));
  const auto cells = column(workplace, listing("processors"), "VERSION");
  ASSERT_EQ(rows.size(), 4u);
  const std::string kept[] = {std::string(kRoom - 3, 'v') + character, std::string(kRoom - 2, 'v'),
                              std::string(kRoom - 1, 'v'), std::string(kRoom, 'v')};
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].at("Version"), kept[i]);
    EXPECT_EQ(cells.at(i), kept[i]);
  }
}

TEST(HostileText, AnEmptyTextIsNullAndAnEmptyCell) {
  const Workplace workplace;
  insert_row(workplace, "Processor", {{"Version", ""}, {"CoreCount", 4u}});
  EXPECT_TRUE(records(workplace, listing("processors"))[0].at("Version").is_null());
  EXPECT_EQ(column(workplace, listing("processors"), "VERSION"), std::vector<std::string>{""});
}

TEST(HostileText, LargeNumbersAreNumbers) {
  const Workplace workplace;
  insert_row(workplace, "PCIs", {{"FunKey", 0x7fffffffu}, {"SegNo", 0x7fu}, {"BridgeId", 0xffffffffu}});
  const auto row = records(workplace, listing("functions"))[0];
  EXPECT_EQ(row.at("BridgeId"), 0xffffffffu);
  EXPECT_TRUE(row.at("BridgeId").is_number_unsigned());
  EXPECT_EQ(column(workplace, listing("functions"), "BRIDGE"), std::vector<std::string>{"00ff:ff:ff.ff"});
}

}  // namespace
}  // namespace zymdb::test
