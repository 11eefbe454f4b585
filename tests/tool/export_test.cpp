// zymdb export, as a user runs it. What the formats hold is checked by export_formats_test.py.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tool/run_tool.h"

namespace zymdb::test {
namespace {

using std::filesystem::perms;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kTexts[] = {"json", "prometheus", "cyclonedx"};
constexpr const char* kFormats[] = {"json", "prometheus", "cyclonedx", "csv"};

class Export : public testing::Test {
 protected:
  Export() { workplace_.collect_example(); }

  std::string file(const char* name) const { return workplace_.path(name); }

  std::string output(const Words& words) const {
    const Outcome outcome = workplace_.tool(words);
    EXPECT_EQ(outcome.status, 0) << outcome;
    EXPECT_THAT(outcome.err, IsEmpty());
    return outcome.out;
  }

  static std::vector<std::string> names_in(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  static void expect_refused(const Outcome& outcome, const std::string& reason) {
    EXPECT_EQ(outcome.status, 2) << outcome;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StartsWith("zymdb: cannot write "));
    EXPECT_THAT(outcome.err, HasSubstr(reason));
    EXPECT_THAT(lines_of(outcome.err), SizeIs(1)) << outcome;
  }

  Workplace workplace_;
};

TEST_F(Export, IsJsonUnlessAskedForAnotherFormat) {
  EXPECT_EQ(output({"export"}), output({"export", "--format", "json"}));
  EXPECT_THAT(output({"export", "--format", "prometheus"}), StartsWith("# HELP zymdb_build_info "));
  EXPECT_EQ(nlohmann::json::parse(output({"export", "--format", "cyclonedx"}))["bomFormat"], "CycloneDX");
}

TEST_F(Export, GoesIntoAFileWhereAskedFor) {
  for (const char* format : kTexts) {
    write_file(file("export"), "former");
    EXPECT_EQ(output({"export", "--format", format, "--output", file("export")}), "");
    EXPECT_EQ(read_file(file("export")), output({"export", "--format", format}));
  }
}

TEST_F(Export, MayBeReadByOthers) {
  const mode_t former = umask(022);
  output({"export", "--format", "prometheus", "--output", file("zymdb.prom")});
  umask(former);
  EXPECT_EQ(status(workplace_.path("zymdb.prom")).permissions(),
            perms::owner_read | perms::owner_write | perms::group_read | perms::others_read);
}

TEST_F(Export, AsCsvIsAFolderOfFiles) {
  output({"export", "--format", "csv", "--output", file("csv")});
  EXPECT_THAT(names_in(file("csv")),
              ElementsAre("adapters.csv", "drives.csv", "embedded.csv", "firmware.csv", "functions.csv",
                          "gpus.csv", "logical-ports.csv", "memory.csv", "pldm.csv", "ports.csv",
                          "processors.csv", "settings.csv", "system.csv"));
  const auto lines = lines_of(read_file(file("csv/processors.csv")));
  ASSERT_THAT(lines, SizeIs(3));
  EXPECT_THAT(lines[0], StartsWith("_id,ProcId,"));
  EXPECT_THAT(lines[1], MatchesRegex("1,0x[0-9a-f]+,.*,CPU1,.*\r"));
}

TEST_F(Export, AsCsvLeavesAFolderAloneThatHasSomethingInIt) {
  create_directory(workplace_.path("empty"));
  output({"export", "--format", "csv", "--output", file("empty")});
  const auto before = names_in(file("empty"));
  const std::string reason = "empty: is not an empty folder";
  expect_refused(workplace_.tool({"export", "--format", "csv", "--output", file("empty")}), reason);
  EXPECT_EQ(names_in(file("empty")), before);
}

TEST_F(Export, IntoAMissingFolderIsToldInOneLine) {
  for (const char* format : kFormats)
    expect_refused(workplace_.tool({"export", "--format", format, "--output", file("none/export")}),
                   "none/export: No such file or directory");
}

TEST_F(Export, IntoAFolderThatMayNotBeWrittenIsToldInOneLine) {
  permissions(workplace_.path(""), perms::owner_all | perms::group_all | perms::others_all);
  permissions(workplace_.inventory(), perms::owner_all | perms::others_read);
  create_directory(workplace_.path("closed"));
  permissions(workplace_.path("closed"), perms::owner_all | perms::others_read | perms::others_exec);
  Setting nobody;
  nobody.unprivileged = true;
  for (const char* format : kFormats)
    expect_refused(workplace_.tool({"export", "--format", format, "--output", file("closed/export")}, nobody),
                   "closed/export: Permission denied");
  EXPECT_TRUE(is_empty(workplace_.path("closed")));
}

// The disk is one of the command's own, seen by nobody else.
TEST_F(Export, OntoAFullDiskIsToldInOneLineAndLeavesWhatWasThere) {
  create_directory(workplace_.path("disk"));
  for (const std::string format : kFormats) {
    const std::string disk = file("disk"), place = disk + (format == "csv" ? "/new" : "/export");
    const Outcome outcome =
        run_program({"unshare", "--map-root-user", "--mount", "bash", "-c",
                     "mount -t tmpfs -o size=16k none '" + disk + "' && echo former >'" + disk +
                         "/export'; '" ZYMDB_TOOL "' export --format " + format + " --output '" + place +
                         "'; status=$?; cat '" + disk + "/'*; exit $status"},
                    workplace_.with_inventory());
    EXPECT_EQ(outcome.status, 2) << outcome;
    EXPECT_EQ(outcome.out, "former\n");
    EXPECT_THAT(outcome.err, MatchesRegex("zymdb: cannot write .*: No space left on device\n"));
  }
}

TEST_F(Export, OfTheSchemaNeedsNoInventory) {
  const Workplace empty;
  const Outcome outcome = empty.tool({"export", "--schema"});
  EXPECT_EQ(outcome.status, 0) << outcome;
  EXPECT_FALSE(exists(empty.inventory()));
  const auto schema = nlohmann::json::parse(outcome.out);
  EXPECT_THAT(schema["required"], IsSupersetOf({"format_version", "system", "drives", "settings"}));
  EXPECT_EQ(empty.tool({"export", "--schema", "--output", empty.path("schema")}).status, 0);
  EXPECT_EQ(read_file(empty.path("schema")), outcome.out);
}

// What cannot be read is no fault of the place where it was to go.
TEST_F(Export, WithoutItsSourcesFails) {
  const Outcome outcome = workplace_.tool({"export", "--pci-ids", file("none")});
  EXPECT_EQ(outcome.status, 1) << outcome;
  EXPECT_THAT(outcome.err, MatchesRegex("zymdb: .*none: No such file or directory\n"));
}

}  // namespace
}  // namespace zymdb::test
