// What is said about words that there are not.
#include "terminal/command_line.h"

#include <gtest/gtest.h>

namespace zymdb::tool {
namespace {

const std::vector<std::string> kCommands{"show", "settings", "list", "import", "collect"};

TEST(UnknownWord, IsToldWithTheWordThatWasMeant) {
  const std::pair<const char*, const char*> meant[] = {
      {"shwo", "show"},        {"sohw", "show"},         {"shw", "show"},       {"shows", "show"},
      {"SHOW", "show"},        {"lsit", "list"},         {"lits", "list"},      {"setting", "settings"},
      {"sttings", "settings"}, {"settnigs", "settings"}, {"colect", "collect"}, {"cllecet", "collect"},
      {"inport", "import"},
  };
  for (const auto& [word, command] : meant)
    EXPECT_EQ(unknown_word("command", word, kCommands),
              std::string("unknown command '") + word + "'; did you mean '" + command + "'?");
}

TEST(UnknownWord, IsToldWithAllWordsWhenNoneIsNear) {
  for (const char* word : {"", "x", "so", "widgets", "tshows12", "exporting"})
    EXPECT_EQ(unknown_word("command", word, kCommands),
              std::string("unknown command '") + word + "'; there are show, settings, list, import, collect");
  EXPECT_EQ(unknown_word("shell", "fish", {"bash"}), "unknown shell 'fish'; there is bash");
}

TEST(WholeNumber, TakesDigitsWithinItsBounds) {
  const auto check = [](const char* text) {
    std::string word = text;
    return whole_number(1, 86400)(word);
  };
  for (const char* text : {"1", "86400", "007"}) EXPECT_EQ(check(text), "") << text;
  for (const char* text :
       {"", "0", "86401", "-1", "+1", "1.5", "1e3", "0x1", " 1", "1 ", "one", "99999999999999999999"})
    EXPECT_EQ(check(text), std::string("'") + text + "' is no whole number from 1 to 86400");
}

}  // namespace
}  // namespace zymdb::tool
