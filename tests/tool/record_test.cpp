// `zymdb record` as its user sees it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tool/listing_case.h"
#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(Record, WritesWhatCollectReadsBack) {
  const Workplace workplace;
  const auto copy = workplace.path("copy").string();
  const auto outcome = workplace.tool({"record", copy});
  ASSERT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.out, ContainsRegex("^[0-9]+ files in " + copy + "\n$"));
  ASSERT_EQ(workplace.tool({"collect", "--quiet", "--sysfs", copy + "/sys"}).status, 0);
  EXPECT_FALSE(records(workplace, listing("processors")).empty());
  EXPECT_FALSE(std::filesystem::exists(workplace.path("copy/inventory.db")));
}

TEST(Record, SanitizesWhereItIsToldTo) {
  const Workplace workplace;
  workplace.collect_example_system();
  const auto serial = records(workplace, listing("system")).at(0).at("SerialNo");
  const auto tree = workplace.path("sys").string();
  ASSERT_TRUE(std::filesystem::exists(tree));
  const auto copy = workplace.path("copy").string();
  ASSERT_EQ(workplace.tool({"record", "--sanitize", "--sysfs", tree, copy + "/"}).status, 0);
  ASSERT_EQ(workplace.tool({"collect", "--quiet", "--replace", "--sysfs", copy + "/sys"}).status, 0);
  EXPECT_NE(records(workplace, listing("system")).at(0).at("SerialNo"), serial);
}

TEST(Record, LeavesAFolderAloneThatHasSomethingInIt) {
  const Workplace workplace;
  write_file(workplace.path("mine"), "");
  const auto outcome = workplace.tool({"record", workplace.path("").string()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("is not an empty folder"));
  EXPECT_THAT(outcome.out, IsEmpty());
  EXPECT_THAT(workplace.tool({"record"}).err, HasSubstr("DIR is missing"));
}

TEST(Record, NamesWhatOnlyRootMayRead) {
  const Workplace workplace;
  const auto tree = workplace.path("sys");
  write_file(workplace.path("x"), "");
  std::filesystem::create_directories(tree / "class/dmi/id");
  write_file(tree / "class/dmi/id/product_name", "ES-2240\n");
  write_file(tree / "class/dmi/id/product_serial", "ES2240-000017\n");
  std::filesystem::permissions(tree / "class/dmi/id/product_serial", std::filesystem::perms::none);
  std::filesystem::permissions(workplace.path(""), std::filesystem::perms::all);
  const auto outcome = workplace.tool({"record", "--sysfs", tree.string(), workplace.path("copy").string()},
                                      {.unprivileged = true});
  ASSERT_EQ(outcome.status, 0) << outcome;
  EXPECT_THAT(outcome.err, HasSubstr("not recorded, since it may not be read: " +
                                     (tree / "class/dmi/id/product_serial").string()));
}

}  // namespace
}  // namespace zymdb::test
