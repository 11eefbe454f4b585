#include "collect/sources/pci/lspci_dump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

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
      {"02:00.0 0200: 8086:1521\n03:00.0 0200: 8086:1521\n", "line 2: function 0000:02:00.0 is not ended"},
      {"02:00.0 0200: 8086:1521\n10: 00\n", "a hex line is missing or out of order"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21\n", "line 2: a hex line without 16 two-digit bytes"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 2x 15 06 00 10 00 01 00 00 02 10 00 80 00\n",
       "16 two-digit bytes"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21 15 06 00 10 00 01 00 00 02 10 00 80 00 00\n", "more than 16"},
      {"02:00.0 0200: 8086:1521\n00: 86 80 21 15 06 00 10 00 01 00 00 02 10 00 80 00\n\n",
       "has 16 bytes, not"},
      {whole.substr(0, whole.size() - 1), "line 5: the dump ends inside function 0000:02:00.0"},
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

// Every prefix of a dump is refused unless it ends where a function does.
TEST(LspciDump, RefusesEveryPrefixThatEndsInsideAFunction) {
  std::string whole = read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci");
  whole.resize(whole.find("\n\n", 3000) + 2);
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string prefix = whole.substr(0, size);
    const bool ends_with_a_function = prefix.ends_with("\n\n");
    EXPECT_EQ(refusal(prefix) == "accepted", ends_with_a_function) << size;
  }
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
