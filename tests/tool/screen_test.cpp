// What is drawn on a terminal when a table changes.
#include "terminal/screen.h"

#include <gtest/gtest.h>

namespace zymdb::tool {
namespace {

TEST(Redraw, WritesTheRunsThatDiffer) {
  struct Case {
    Lines before;
    Lines after;
    const char* drawn;
  } const cases[] = {
      {{}, {}, ""},
      {{"same"}, {"same"}, ""},
      {{}, {"new"}, "\033[1;1Hnew"},
      {{"PORT 0", "up   1"}, {"PORT 0", "down 1"}, "\033[2;1Hdown"},
      {{"a1b2c3"}, {"a9b2c8"}, "\033[1;2H9\033[1;6H8"},
      {{"longer"}, {"long"}, "\033[1;5H  "},
      {{"long"}, {"longer"}, "\033[1;5Her"},
      {{"one", "two"}, {"one"}, "\033[2;1H   "},
      {{"one"}, {"one", "two"}, "\033[2;1Htwo"},
      {{"µ1"}, {"µ2"}, "\033[1;2H2"},
      {{"µx"}, {"ux"}, "\033[1;1Hu"},
  };
  for (const auto& [before, after, drawn] : cases) EXPECT_EQ(redraw(before, after), drawn);
}

TEST(Redraw, TakesBytesThatAreNoTextAsTheyCome) {
  EXPECT_EQ(redraw({"\x80\x80"}, {"\x80\x80"}), "");
  EXPECT_EQ(redraw({"a"}, {"a\x80"}), "\033[1;1Ha\x80");
}

TEST(SplitLines, EndsEachAtItsLineEnd) {
  EXPECT_EQ(split_lines("a\nb\nc\n"), (Lines{"a", "b", "c"}));
  EXPECT_EQ(split_lines("a\nb"), (Lines{"a", "b"}));
  EXPECT_EQ(split_lines("a\n\nb"), (Lines{"a", "", "b"}));
  EXPECT_EQ(split_lines(""), Lines());
}

TEST(Screen, BringsBackWhatWasThere) {
  std::string written;
  {
    Screen screen([&](std::string_view text) { written += text; });
    screen.show({"a"});
    screen.show({"a"});
    screen.forget();
    screen.show({"a"});
  }
  EXPECT_EQ(written,
            "\033[?1049h\033[?25l\033[H\033[2J\033[1;1Ha\033[H\033[2J\033[1;1Ha\033[?25h\033[?1049l");
}

TEST(Screen, OfATerminalThatIsGoneEndsQuietly) {
  int refused = 0;
  bool gone = false;
  {
    const Screen screen([&](std::string_view) {
      if (gone) throw ++refused;
    });
    gone = true;
  }
  EXPECT_EQ(refused, 1);
}

}  // namespace
}  // namespace zymdb::tool
