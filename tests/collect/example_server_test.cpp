// The example server's files are what their generator writes, and good enough for the tools that know the
// formats.
#include <gtest/gtest.h>

#include "collect/machines.h"

namespace zymdb::collect {
namespace {

TEST(ExampleServerFiles, AreWhatTheirGeneratorWrites) {
  const TemporaryFolder folder;
  output_of("python3 " ZYMDB_EXAMPLE_SERVER "/generate.py '" + folder.path().string() + "'");
  for (const char* name : {"/server.lspci", "/server.smbios"}) {
    EXPECT_TRUE(read_file(folder.path().string() + name) ==
                read_file(std::string(ZYMDB_EXAMPLE_SERVER) + name))
        << name;
  }
}

TEST(ExampleServerFiles, AreCleanToDmidecode) {
  const std::string text = output_of("dmidecode --from-dump " ZYMDB_EXAMPLE_SERVER "/server.smbios");
  for (const char* complaint : {"OUT OF SPEC", "BAD INDEX", "Wrong DMI", "Invalid entry", "checksum"}) {
    EXPECT_EQ(text.find(complaint), std::string::npos) << complaint;
  }
  EXPECT_NE(text.find("End Of Table"), std::string::npos);
}

TEST(ExampleServerFiles, AreCleanToLspci) {
  const std::string command = "lspci -F " ZYMDB_EXAMPLE_SERVER "/server.lspci -nn -vv";
  EXPECT_EQ(output_of("sh -c '" + command + " 2>&1 >/dev/null | grep -v libkmod; true'"), "");
  EXPECT_NE(output_of(command).find("15b3:a2d6"), std::string::npos);
}

}  // namespace
}  // namespace zymdb::collect
