// What lspci itself makes of a dump is what the reader must make of it.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <utility>

#include "collect/machines.h"
#include "collect/model/machine.h"
#include "collect/sources/pci/lspci_dump.h"
#include "collect/sources/pci/pci_ids.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

class RecordedLspci : public testing::TestWithParam<RecordedFile> {
 protected:
  std::string lspci(const std::string& options) const {
    return output_of("lspci -F '" + GetParam().path + "' -D " + options);
  }

  std::vector<PciFunction> functions() const {
    return parse_lspci_dump(read_file(GetParam().path), GetParam().path);
  }
};

INSTANTIATE_TEST_SUITE_P(Machines, RecordedLspci, testing::ValuesIn(recorded_lspci_dumps()),
                         [](const auto& instance) { return name_of(instance.param); });

using Fields = std::map<std::string, std::string>;

// Blocks of "Name:\tvalue" lines, an empty line between them.
std::vector<Fields> blocks(const std::string& text) {
  std::vector<Fields> result(1);
  for (const auto& line : lines_of(text)) {
    const size_t colon = line.find(":\t");
    if (colon != std::string::npos) {
      result.back()[line.substr(0, colon)] = line.substr(colon + 2);
    } else if (!result.back().empty()) {
      result.emplace_back();
    }
  }
  if (result.back().empty()) result.pop_back();
  return result;
}

uint32_t number(const Fields& fields, const char* name) {
  const auto field = fields.find(name);
  return field == fields.end() ? 0 : hex_number(field->second).value();
}

TEST_P(RecordedLspci, HasTheSameFunctionsIdsAndClasses) {
  const auto read = functions();
  const auto expected = blocks(lspci("-n -vmm"));
  ASSERT_EQ(read.size(), expected.size());
  for (size_t i = 0; i < read.size(); ++i) {
    const auto& fields = expected[i];
    SCOPED_TRACE(fields.at("Slot"));
    EXPECT_EQ(to_string(read[i].address), fields.at("Slot"));
    EXPECT_EQ(read[i].vendor, number(fields, "Vendor"));
    EXPECT_EQ(read[i].device, number(fields, "Device"));
    EXPECT_EQ(read[i].class_code >> 8, number(fields, "Class"));
    EXPECT_EQ(read[i].class_code & 0xFFU, number(fields, "ProgIf"));
    EXPECT_EQ(read[i].revision, number(fields, "Rev"));
    EXPECT_EQ(read[i].subsystem_vendor.value_or(0), number(fields, "SVendor"));
    EXPECT_EQ(read[i].subsystem_device.value_or(0), number(fields, "SDevice"));
  }
}

// What stands in a line after `before`, up to the next comma or the end; empty without `before`.
std::string after(const std::string& line, const std::string& before) {
  const size_t at = line.find(before);
  if (at == std::string::npos) return "";
  const size_t start = at + before.size();
  return line.substr(start, line.find(',', start) - start);
}

// "secondary" and "subordinate" of every bridge, by address.
TEST_P(RecordedLspci, HasTheSameBridges) {
  std::map<std::string, std::pair<unsigned, unsigned>> expected;
  std::string slot;
  for (const auto& line : lines_of(lspci("-n -v"))) {
    if (!line.empty() && line.front() != '\t') slot = line.substr(0, line.find(' '));
    if (line.find("\tBus: primary=") == std::string::npos) continue;
    expected[slot] = {hex_number(after(line, "secondary=")).value(),
                      hex_number(after(line, "subordinate=")).value()};
  }
  std::map<std::string, std::pair<unsigned, unsigned>> read;
  for (const auto& function : functions()) {
    if (!function.secondary_bus) continue;
    read[to_string(function.address)] = {*function.secondary_bus, function.subordinate_bus.value_or(0)};
  }
  EXPECT_EQ(read, expected);
  EXPECT_FALSE(read.empty());
}

// "Speed 16GT/s, Width x8" of every capability and status that the dump's bytes reach.
TEST_P(RecordedLspci, HasTheSameLinks) {
  const std::map<std::string, unsigned> generations{{"unknown", 0}, {"2.5GT/s", 1}, {"5GT/s", 2},
                                                    {"8GT/s", 3},   {"16GT/s", 4},  {"32GT/s", 5}};
  std::map<std::string, std::string> expected;
  std::string slot;
  for (const auto& line : lines_of(lspci("-n -vv"))) {
    if (!line.empty() && line.front() != '\t') slot = line.substr(0, line.find(' '));
    for (const std::string what : {"Cap", "Sta"}) {
      if (line.find("\tLnk" + what + ":") == std::string::npos) continue;
      const auto width = leading_number(after(line, "Width x")).value();
      expected[slot] += what + " " + std::to_string(generations.at(after(line, "Speed "))) + " x" +
                        std::to_string(width) + ";";
    }
  }
  std::map<std::string, std::string> read;
  const auto text = [](const char* what, std::optional<uint8_t> generation, std::optional<uint8_t> width) {
    return std::string(what) + " " + std::to_string(generation.value_or(0)) + " x" +
           std::to_string(width.value_or(0)) + ";";
  };
  for (const auto& function : functions()) {
    const auto& [width, generation, max_width, max_generation] = function.link;
    if (max_width.value_or(0) == 0 && width.value_or(0) == 0) continue;
    read[to_string(function.address)] =
        text("Cap", max_generation, max_width) + text("Sta", generation, width);
  }
  EXPECT_EQ(read, expected);
}

// Whether there is a link at all, and which port of one a bridge is, by the lines of the PCI Express
// capability.
TEST_P(RecordedLspci, HasTheSamePorts) {
  const std::pair<const char*, PortType> kPorts[] = {{"Root Port", PortType::kRootPort},
                                                     {"Upstream Port", PortType::kUpstream},
                                                     {"Downstream Port", PortType::kDownstream}};
  std::map<std::string, PortType> expected;
  std::set<std::string> linked;
  std::string slot;
  for (const auto& line : lines_of(lspci("-n -vv"))) {
    if (!line.empty() && line.front() != '\t') slot = line.substr(0, line.find(' '));
    if (line.find("\tLnkSta:") != std::string::npos) linked.insert(slot);
    if (line.find("] Express ") == std::string::npos) continue;
    expected[slot] = PortType::kOther;
    for (const auto& [text, type] : kPorts) {
      if (line.find(text) != std::string::npos) expected[slot] = type;
    }
  }
  for (const auto& function : functions()) {
    const std::string address = to_string(function.address);
    const auto port = expected.find(address);
    EXPECT_EQ(function.port_type, port == expected.end() ? PortType::kUnknown : port->second) << address;
    if (!function.link.max_width) continue;  // the bytes end before the capabilities do
    EXPECT_EQ(*function.link.max_width != 0, linked.contains(address)) << address;
  }
}

// The bridge above is the one whose secondary bus lspci prints as the function's own.
TEST_P(RecordedLspci, HasTheSameBridgesAboveFunctions) {
  std::map<std::string, std::string> leading;  // by domain and bus, "0000:03"
  std::string slot;
  for (const auto& line : lines_of(lspci("-n -v"))) {
    if (!line.empty() && line.front() != '\t') slot = line.substr(0, line.find(' '));
    if (line.find("\tBus: primary=") == std::string::npos) continue;
    // One that nobody configured has bus 0 on both sides.
    if (const auto bus = after(line, "secondary="); bus != "00") leading[slot.substr(0, 5) + bus] = slot;
  }
  Findings findings;
  findings.functions = functions();
  const Machine machine = build_machine(std::move(findings));
  size_t below_bridges = 0;
  for (const auto& function : *machine.functions) {
    const std::string address = to_string(function.pci.address);
    const auto bridge = leading.find(address.substr(0, 7));
    ASSERT_EQ(function.bridge_key.has_value(), bridge != leading.end()) << address;
    if (!function.bridge_key) continue;
    EXPECT_EQ(function.bridge_key->text(), bridge->second) << address;
    ++below_bridges;
  }
  EXPECT_GT(below_bridges, 0U);
}

// "00:1f.2 SATA controller [0106]: Intel Corporation ... [8086:a182]".
TEST_P(RecordedLspci, HasTheSameNames) {
  const auto names = PciIds::load("/usr/share/misc/pci.ids");
  std::map<std::string, std::string> expected;
  for (const auto& line : lines_of(lspci("-nn"))) expected[line.substr(0, line.find(' '))] = line;
  for (const auto& function : functions()) {
    const std::string& line = expected.at(to_string(function.address));
    const std::string vendor(names.vendor(function.vendor));
    const std::string device(names.device(function.vendor, function.device));
    const std::string sub(names.subclass(function.base_class(), function.subclass()));
    for (const auto& name : {vendor, device, sub})
      EXPECT_NE(line.find(name), std::string::npos) << line << " lacks " << name;
    EXPECT_EQ(device.empty(), line.find(" Device [") != std::string::npos) << line;
  }
}

}  // namespace
}  // namespace zymdb::collect
