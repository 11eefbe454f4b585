#include "collect/sources/pci/lspci_dump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <set>
#include <string>
#include <thread>

#include "collect/machines.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

using testing::HasSubstr;

// A network function with an empty configuration space but for its ids.
const char kHexLines[] =
    "00: 86 80 21 15 06 00 10 00 01 00 00 02 10 00 80 00\n"
    "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
    "20: 00 00 00 00 00 00 00 00 00 00 00 00 28 10 18 05\n"
    "30: 00 00 00 00 40 00 00 00 00 00 00 00 0b 01 00 00\n";

std::string function_text(const std::string& slot) {
  return slot + " 0200: 8086:1521\n" + kHexLines + "\n";
}

std::string refusal(const std::string& text) {
  try {
    parse_lspci_dump(text, "dump");
  } catch (const SourceError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(LspciDump, TellsWhatTheConfigurationSpaceHolds) {
  const auto functions = parse_lspci_dump(function_text("02:00.1"), "dump");
  ASSERT_EQ(functions.size(), 1U);
  const auto& function = functions.front();
  EXPECT_EQ(function.address, (PciAddress{0, 2, 0, 1}));
  EXPECT_EQ(function.vendor, 0x8086);
  EXPECT_EQ(function.device, 0x1521);
  EXPECT_EQ(function.class_code, 0x020000U);
  EXPECT_EQ(function.revision, 1);
  EXPECT_EQ(function.subsystem_vendor, 0x1028);
  EXPECT_EQ(function.subsystem_device, 0x0518);
  EXPECT_FALSE(function.secondary_bus);
}

TEST(LspciDump, TakesDomainsOfUpToEightDigits) {
  const auto functions =
      parse_lspci_dump(function_text("0001:02:00.0") + function_text("10000:e1:1f.7"), "dump");
  ASSERT_EQ(functions.size(), 2U);
  EXPECT_EQ(functions[0].address.domain, 1U);
  EXPECT_EQ(functions[1].address, (PciAddress{0x10000, 0xe1, 0x1f, 7}));
}

TEST(LspciDump, TakesLinesThatEndInCarriageReturns) {
  std::string text = function_text("02:00.0");
  for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
    text.insert(at, "\r");
  }
  EXPECT_EQ(parse_lspci_dump(text, "dump").size(), 1U);
}

TEST(LspciDump, SkipsDetailLinesOfAFunction) {
  const std::string text = std::string("02:00.0 0200: 8086:1521\n\tSubsystem: a name\n") + kHexLines + "\n";
  EXPECT_EQ(parse_lspci_dump(text, "dump").size(), 1U);
}

TEST(LspciDump, RefusesWhatIsNotADumpWithLineAndReason) {
  const std::string whole = function_text("02:00.0");
  const struct {
    std::string text;
    const char* message;
  } kCases[] = {
      {"", "dump, line 1: no PCI functions"},
      {"\n\n", "no PCI functions"},
      {"#!/bin/sh\n", "dump, line 1: neither a slot line"},
      {"02:00.0\n", "neither a slot line"},
      {"02:00 0200: 8086:1521\n", "neither a slot line"},
      {"02:20.0 0200: 8086:1521\n", "neither a slot line"},
      {"02:00.8 0200: 8086:1521\n", "neither a slot line"},
      {"123456789:02:00.0 0200:\n", "neither a slot line"},
      {"02:00.0 0200: 8086:1521\n\n", "line 2: function 0000:02:00.0 has no bytes"},
      {whole + whole, "line 7: function 0000:02:00.0 is there twice"},
      {kHexLines, "line 1: a hex line outside a function"},
      {"\tSubsystem: a name\n", "a detail line outside a function"},
      {"02:00.0 0200: 8086:1521\n" + std::string(kHexLines) + "03:00.0 0200: 8086:1521\n",
       "line 6: function 0000:02:00.0 is not ended"},
      {"02:00.0 0200: 8086:1521\n10: 00\n", "a hex line is missing or out of order"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21\n", "line 2: a hex line without 16 two-digit bytes"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 2x 15 06 00 10 00 01 00 00 02 10 00 80 00\n",
       "16 two-digit bytes"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21 15 06 00 10 00 01 00 00 02 10 00 80 00 00\n", "more than 16"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21 15 06 00 10 00 01 00 00 02 10 00 80 00\n\n",
       "has 16 bytes, not"},
      {whole + "03:00.0 0200: 8086:1521\n",
       "line 7: the dump ends inside function 0000:03:00.0 (cut short?)"},
  };
  for (const auto& test : kCases) EXPECT_THAT(refusal(test.text), HasSubstr(test.message)) << test.text;
}

TEST(LspciDump, RefusesAConfigurationSpaceOfMoreThan4096Bytes) {
  std::string text = "02:00.0 0200: 8086:1521\n";
  char line[80];
  for (unsigned offset = 0; offset <= 0x1000; offset += 16) {
    std::snprintf(line, sizeof line, "%02x: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n", offset);
    text += line;
  }
  EXPECT_NE(refusal(text), "accepted");
}

TEST(LspciDump, DecodesNoCapabilityBeyondTheBytesThatWereRead) {
  // Capabilities are announced at 40h, the dump has 64 bytes.
  const auto functions = parse_lspci_dump(function_text("02:00.0"), "dump");
  EXPECT_FALSE(functions.front().link.width);
  EXPECT_EQ(functions.front().port_type, PortType::kUnknown);
}

TEST(LspciDump, EndsOnACapabilityListThatIsALoop) {
  PciFunction function;
  std::vector<uint8_t> config(256);
  config[0x06] = 0x10;
  config[0x34] = 0x40;
  config[0x40] = 0x01;
  config[0x41] = 0x40;
  decode_config(config, function);
  EXPECT_FALSE(function.link.width);
}

// ---- Dumps that end early

// Configuration space of `size` bytes; a PCI Express function's has the capability at 40h.
std::string function_of_size(const std::string& slot, unsigned size, bool is_express = false) {
  std::string text = slot + " 0200: 8086:1521\n";
  char line[80];
  for (unsigned offset = 0; offset < size; offset += 16) {
    std::snprintf(line, sizeof line, "%02x: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n", offset);
    text += line;
  }
  if (!is_express) return text;
  text.replace(text.find("00: 00 00 00 00 00 00 00 ") + 4, 21, "86 80 21 15 06 00 10 ");
  text.replace(text.find("30: 00 00 00 00 00") + 4, 15, "00 00 00 00 40 ");
  return text.replace(text.find("40: 00 00 00 00") + 4, 12, "10 00 02 00 ");
}

TEST(LspciDump, NeedsNoEmptyLineAfterALastFunctionThatIsComplete) {
  const std::string small = function_of_size("01:00.0", 64) + "\n";
  const std::string medium = function_of_size("02:00.0", 256) + "\n";
  const std::string large = function_of_size("03:00.0", 4096, true) + "\n";
  const struct {
    std::string text;
    bool is_complete;
  } kCases[] = {
      {function_of_size("04:00.0", 64), true},
      {function_of_size("04:00.0", 256), true},
      {function_of_size("04:00.0", 4096), true},
      {function_of_size("04:00.0", 80), false},
      {function_of_size("04:00.0", 128), false},  // a CardBus bridge has as many
      {small + function_of_size("04:00.0", 64), true},
      {small + function_of_size("04:00.0", 256), true},
      {medium + function_of_size("04:00.0", 64), false},
      {medium + function_of_size("04:00.0", 256), true},
      {small + medium + function_of_size("04:00.0", 64), false},
      {large + function_of_size("04:00.0", 4096), true},
      {large + function_of_size("04:00.0", 64), false},
      {large + function_of_size("04:00.0", 256, true), false},  // its bytes go on beyond these
      {large + function_of_size("04:00.0", 256), true},         // a conventional PCI function has no more
  };
  for (const auto& [text, is_complete] : kCases) {
    const std::string whole = refusal(text);
    EXPECT_EQ(whole == "accepted", is_complete) << text.size() << whole;
    const std::string without_line_end = text.substr(0, text.size() - 1);
    EXPECT_EQ(refusal(without_line_end) == "accepted", is_complete) << without_line_end.size();
    EXPECT_NE(refusal(text.substr(0, text.size() - 2)), "accepted") << "cut within its last byte";
  }
}

std::string without_line_ends(std::string text) {
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

// Every prefix of a dump is refused unless it ends where a function does. Nobody can tell that there are more
// bytes of the only function.
TEST(LspciDump, RefusesEveryPrefixThatEndsInsideAFunction) {
  std::string whole = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
  whole.resize(whole.find("\n\n", 3000) + 2);
  std::set<std::string> complete;
  for (size_t end = whole.find("\n\n"); end != std::string::npos; end = whole.find("\n\n", end + 1))
    complete.insert(whole.substr(0, end));
  const std::string header = whole.substr(0, whole.find("\n40: "));
  ASSERT_LT(header.size(), complete.begin()->size());
  complete.insert(header);
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string prefix = whole.substr(0, size);
    EXPECT_EQ(refusal(prefix) == "accepted", complete.contains(without_line_ends(prefix))) << size;
  }
}

// ---- What people and tools do to dumps

TEST(LspciDump, SaysWhatToTypeWhereTheTextIsForPeople) {
  const std::string message =
      "line 2: function 0000:00:00.0 has no bytes: make the dump with \"lspci -xxxx\"";
  for (const char* text : {
           "00:00.0 Host bridge [0600]: Intel Corporation Device [8086:09a2] (rev 04)\n"
           "00:00.1 System peripheral [0880]: Intel Corporation Device [8086:09a4]\n",
           "00:00.0 Host bridge: Intel Corporation Device 09a2\n"
           "00:00.1 System peripheral: Intel Corporation Device 09a4\n",
           "00:00.0 Host bridge: Intel Corporation Device 09a2\n\n",
           "00:00.0 Host bridge: Intel Corporation Device 09a2\n\tSubsystem: a name\n",
       })
    EXPECT_THAT(refusal(text), HasSubstr(message)) << text;
  EXPECT_THAT(refusal("00:00.0 Host bridge: Intel Corporation Device 09a2\n\tSubsystem: a name\n\n"),
              HasSubstr("has no bytes: make the dump with"));
}

TEST(LspciDump, SkipsWhatToolsWroteInBetweenAndSaysSo) {
  std::string text = "pcilib: Cannot open /dev/mem\n" + function_text("02:00.0") + "lspci: Unable to load\n";
  text.insert(text.find("20: "), "pcilib: sysfs_read_vpd: read failed: \x1b[31mNo such device\n");
  std::vector<std::string> notices;
  const auto functions = parse_lspci_dump(text, "dump", &notices);
  ASSERT_EQ(functions.size(), 1U);
  EXPECT_EQ(functions.front().subsystem_device, 0x0518);
  EXPECT_THAT(notices,
              testing::ElementsAre("dump, line 1: skipped \"pcilib: Cannot open /dev/mem\", and 2 more "
                                   "lines that tools wrote in between"));
  notices.clear();
  parse_lspci_dump(function_text("02:00.0") + "pcilib: a\x1b[31mb", "dump", &notices);
  EXPECT_THAT(notices,
              testing::ElementsAre("dump, line 7: skipped \"pcilib: a?[31mb\", which a tool wrote in "
                                   "between"));
}

TEST(LspciDump, RefusesALineWithoutEnd) {
  EXPECT_THAT(refusal(std::string(1 << 20, 'a')), HasSubstr("dump, line 1: a line of more than 65536 bytes"));
  std::vector<std::string> notices;
  EXPECT_THROW(read_lspci_dump("/dev/zero", notices), SourceError);
}

TEST(LspciDump, IsReadAsItComes) {
  TemporaryFolder folder;
  const std::string text = function_text("02:00.0") + function_text("03:00.0");
  std::vector<std::string> notices;
  EXPECT_EQ(read_lspci_dump(folder.write("dump", text), notices).size(), 2U);
  const std::string pipe = (folder.path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(pipe) << text; });
  EXPECT_EQ(read_lspci_dump(pipe, notices).size(), 2U);
  writer.join();
}

TEST(LspciDump, MayBeLargerThanWhatIsReadAtOnce) {
  TemporaryFolder folder;
  const std::string path = folder.write("dump", function_text("02:00.0"));
  {
    std::ofstream file(path, std::ios::app);
    const std::string detail = "\t" + std::string(60'000, 'x') + "\n";
    file << "03:00.0 0200: 8086:1521\n";
    for (size_t written = 0; written < (size_t{65} << 20); written += detail.size()) file << detail;
    file << kHexLines;
  }
  std::vector<std::string> notices;
  EXPECT_EQ(read_lspci_dump(path, notices).size(), 2U);
}

TEST(LspciDump, ReadsOrRefusesFlippedBytes) {
  const std::string whole = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci").substr(0, 4000);
  const std::string start = whole.substr(0, whole.rfind("\n\n") + 2);
  unsigned refused = 0;
  for (size_t at = 0; at < start.size(); ++at) {
    std::string damaged = start;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x41);
    const std::string message = refusal(damaged);
    if (message == "accepted") continue;
    ++refused;
    EXPECT_THAT(message, HasSubstr("dump, line ")) << at;
  }
  EXPECT_GT(refused, start.size() / 2);
}

}  // namespace
}  // namespace zymdb::collect
