// Who makes an inventory that is not there, and who fails instead.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/parsing_marker.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

// Those who only read, or change what must be there already.
const Words kReaders[] = {{"show", "backplanes"},
                          {"link", "3b:00.0"},
                          {"link", "3b:00.0", "--set", "tx=1"},
                          {"watch", "ports"},
                          {"merge"},
                          {"settings", "list", "3b:00.0"},
                          {"settings", "set", "Boot.1=Pxe"},
                          {"settings", "pending"},
                          {"dpu", "log", "3"},
                          {"dpu", "clear", "3"},
                          {"dpu", "uefi", "3"},
                          {"dpu", "uefi", "3", "4.2"}};

TEST(Creation, IsNotForReaders) {
  const Workplace workplace;
  const ParsingMarker nobody_stores_settings;
  for (const auto& command : kReaders) {
    SCOPED_TRACE(testing::PrintToString(command));
    const auto outcome = workplace.tool(command);
    EXPECT_EQ(outcome.status, 1) << outcome;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(lines_of(outcome.err), ElementsAre(HasSubstr(workplace.inventory().string())));
  }
  EXPECT_TRUE(std::filesystem::is_empty(workplace.path("")));
}

TEST(Creation, IsNotOfOtherFilesByReaders) {
  const Workplace workplace;
  const ParsingMarker nobody_stores_settings;
  workplace.collect_example();
  const auto files = [&] {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(workplace.path("")))
      names.push_back(entry.path().filename());
    return names;
  };
  const auto before = files();
  for (const Words& command : {Words{"show", "backplanes"},
                               {"show", "drives", "--merged"},
                               {"show", "adapters"},
                               {"show", "settings"},
                               {"settings", "pending"},
                               {"dpu", "log", "3"},
                               {"merge"}}) {
    EXPECT_EQ(workplace.tool(command).status, 0) << testing::PrintToString(command);
    EXPECT_THAT(files(), UnorderedElementsAreArray(before)) << testing::PrintToString(command);
  }
}

TEST(Creation, IsForThoseWhoFillAnInventory) {
  const ParsingMarker nobody_stores_settings;
  const Words writers[] = {
      {"init"},
      {"collect", "--quiet", "--smbios", example_smbios()},
      {"settings", "import", ZYMDB_SOURCE_DIR "/data/example-server/settings.json"},
      {"properties", "import", ZYMDB_SOURCE_DIR "/tests/data/properties/two-backplanes.properties"},
      {"dpu", "append", "3", "--message", "boot done"}};
  for (const auto& command : writers) {
    SCOPED_TRACE(testing::PrintToString(command));
    const Workplace workplace;
    const auto outcome = workplace.tool(command);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_TRUE(exists(workplace.inventory()));
  }
}

TEST(Creation, ByInitSaysWhereTheInventoryIsAndMayBeRepeated) {
  const Workplace workplace;
  for (int time = 1; time <= 2; ++time) {
    const auto outcome = workplace.tool({"init"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, workplace.inventory().string() + "\n");
  }
  EXPECT_TRUE(exists(workplace.inventory()));
}

}  // namespace
}  // namespace zymdb::test
