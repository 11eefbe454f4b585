#include "collect/model/machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "collect/machines.h"
#include "collect/sources/pci/lspci_dump.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

PciFunction endpoint(PciAddress address, uint32_t class_code = 0x020000) {
  PciFunction function;
  function.address = address;
  function.vendor = 0x15b3;
  function.device = 0x101d;
  function.class_code = class_code;
  return function;
}

PciFunction bridge(PciAddress address, uint8_t secondary, PortType type = PortType::kRootPort) {
  PciFunction function = endpoint(address, 0x060400);
  function.secondary_bus = secondary;
  function.port_type = type;
  return function;
}

Machine machine_of(std::vector<PciFunction> functions, std::vector<SysfsSlot> slots = {}) {
  Findings findings;
  findings.functions = std::move(functions);
  findings.sysfs_slots = std::move(slots);
  return build_machine(std::move(findings));
}

const MachineFunction& at(const Machine& machine, PciAddress address) {
  const auto& functions = machine.functions.value();
  const auto found = std::ranges::find_if(functions, [&](const auto& f) { return f.pci.address == address; });
  EXPECT_NE(found, functions.end()) << to_string(address);
  return *found;
}

TEST(Machine, MakesKeysOfAddresses) {
  const auto machine = machine_of({endpoint({1, 0x3b, 0x1f, 7}), bridge({1, 0, 2, 0}, 0x3b)});
  const auto& function = at(machine, {1, 0x3b, 0x1f, 7});
  EXPECT_EQ(function.key, FunctionKey(0x013B1F07U));
  EXPECT_EQ(function.device_key, 0x013B1F00U) << "the device's function 0, there or not";
  EXPECT_EQ(function.bridge_key, FunctionKey(0x01000200U));
  EXPECT_FALSE(at(machine, {1, 0, 2, 0}).bridge_key);
}

TEST(Machine, PutsTheWholeDeviceAndWhatIsBelowItIntoTheSlot) {
  const auto machine = machine_of({bridge({0, 0, 1, 0}, 1), bridge({0, 1, 0, 0}, 2, PortType::kUpstream),
                                   bridge({0, 2, 0, 0}, 3, PortType::kDownstream), endpoint({0, 3, 0, 0}),
                                   endpoint({0, 3, 0, 1}), endpoint({0, 0, 3, 0})},
                                  {{"4", {0, 1, 0, 0}}});
  for (const PciAddress inside :
       {PciAddress{0, 1, 0, 0}, PciAddress{0, 2, 0, 0}, PciAddress{0, 3, 0, 0}, PciAddress{0, 3, 0, 1}}) {
    EXPECT_EQ(machine.location_of(at(machine, inside)), ZYMDB_LOCATION_SLOT) << to_string(inside);
    EXPECT_EQ(at(machine, inside).device_key, 0x10004U);
  }
  EXPECT_EQ(machine.location_of(at(machine, {0, 0, 1, 0})), ZYMDB_LOCATION_BOARD);
  EXPECT_EQ(machine.location_of(at(machine, {0, 0, 3, 0})), ZYMDB_LOCATION_BOARD);
}

TEST(Machine, PutsVirtualFunctionsOfACardIntoItsSlot) {
  const auto machine = machine_of({bridge({0, 0, 1, 0}, 1), endpoint({0, 1, 0, 0}), endpoint({0, 1, 2, 5})},
                                  {{"4", {0, 1, 0, 0}}});
  EXPECT_EQ(at(machine, {0, 1, 2, 5}).device_key, 0x10004U);
}

TEST(Machine, PutsDevicesOfASharedBusIntoTheirOwnSlots) {
  const auto machine = machine_of(
      {bridge({0, 0, 1, 0}, 1), endpoint({0, 1, 0, 0}), endpoint({0, 1, 1, 0}), endpoint({0, 1, 2, 0})},
      {{"4", {0, 1, 0, 0}}, {"5", {0, 1, 1, 0}}});
  EXPECT_EQ(at(machine, {0, 1, 0, 0}).device_key, 0x10004U);
  EXPECT_EQ(at(machine, {0, 1, 1, 0}).device_key, 0x10005U);
  EXPECT_EQ(machine.location_of(at(machine, {0, 1, 2, 0})), ZYMDB_LOCATION_BOARD);
}

TEST(Machine, KnowsNoPlacesWithoutASourceOfSlots) {
  const auto machine = machine_of({endpoint({0, 1, 0, 0}), endpoint({0, 2, 0, 0})}, {{"4", {0, 1, 0, 0}}});
  EXPECT_TRUE(at(machine, {0, 1, 0, 0}).place_known);
  EXPECT_FALSE(at(machine, {0, 2, 0, 0}).place_known);
}

TEST(Machine, NumbersLargeDomainsAnewAndSaysSo) {
  const auto machine =
      machine_of({endpoint({0, 1, 0, 0}), endpoint({0x10000, 1, 0, 0}), endpoint({0x10001, 1, 0, 0})});
  EXPECT_EQ(at(machine, {0x10000, 1, 0, 0}).key, FunctionKey(0x01010000U));
  EXPECT_EQ(at(machine, {0x10001, 1, 0, 0}).key, FunctionKey(0x02010000U));
  EXPECT_THAT(machine.notices, ElementsAre("PCI domain 0x10000 is segment 1 in the inventory",
                                           "PCI domain 0x10001 is segment 2 in the inventory"));
}

TEST(Machine, LeavesDomainsOutThatFitNowhere) {
  std::vector<PciFunction> functions;
  for (uint32_t domain = 0; domain < 129; ++domain) functions.push_back(endpoint({domain, 1, 0, 0}));
  const auto machine = machine_of(functions);
  EXPECT_EQ(machine.functions->size(), 128U);
  EXPECT_THAT(machine.notices, ElementsAre(HasSubstr("PCI domain 0x80 is left out")));
  for (const auto& function : *machine.functions) EXPECT_LT(function.key.value, 1U << 31);
}

TEST(Machine, LeavesFunctionsOutThatDoNotAnswer) {
  auto silent = endpoint({0, 1, 0, 0});
  silent.vendor = 0xFFFF;
  const auto machine = machine_of({silent, endpoint({0, 2, 0, 0})});
  EXPECT_EQ(machine.functions->size(), 1U);
  EXPECT_THAT(machine.notices, ElementsAre("PCI function 0000:01:00.0 does not answer and is left out"));
}

TEST(Machine, EndsWhereBridgesLeadToThemselves) {
  auto looped = endpoint({0, 1, 0, 0}, 0x060400);
  looped.secondary_bus = 1;
  auto parent = endpoint({0, 2, 0, 0});
  parent.parent = PciAddress{0, 2, 0, 0};
  const auto machine = machine_of({looped, parent, bridge({0, 5, 0, 0}, 4)});
  for (const auto& function : *machine.functions) EXPECT_FALSE(function.bridge_key);
}

// ---- The example server

class ExampleServer : public testing::Test {
 protected:
  ExampleServer() {
    Findings findings;
    findings.functions = parse_lspci_dump(read_file(ZYMDB_EXAMPLE_SERVER "/server.lspci"), "server.lspci");
    findings.smbios =
        SmbiosTables::parse_dump(read_file(ZYMDB_EXAMPLE_SERVER "/server.smbios"), "server.smbios");
    machine_ = build_machine(std::move(findings));
  }

  Machine machine_;
};

TEST_F(ExampleServer, NeedsNoNotice) {
  EXPECT_THAT(machine_.notices, IsEmpty());
}

TEST_F(ExampleServer, HasItsCardsInTheSlotsThatNameTheirRootPorts) {
  const auto& port = at(machine_, {0, 0x97, 2, 0});
  const auto& dpu = at(machine_, {0, 0x98, 0, 1});
  EXPECT_EQ(machine_.location_of(port), ZYMDB_LOCATION_BOARD);
  EXPECT_EQ(dpu.device_key, 0x10004U);
  EXPECT_EQ(dpu.bridge_key, port.key);
  EXPECT_EQ(machine_.slot_of(dpu)->designation, "PCIe Slot 4");
  EXPECT_EQ(machine_.slot_of(dpu)->type, 0xBD);
}

TEST_F(ExampleServer, HasItsDrivesInBays) {
  EXPECT_EQ(at(machine_, {0, 0x68, 0, 0}).device_key, 0x20002U) << "behind a switch; the bay names the drive";
  EXPECT_EQ(at(machine_, {0, 0xe3, 0, 0}).device_key, 0x20005U) << "the bay names the root port";
  EXPECT_EQ(machine_.location_of(at(machine_, {0, 0x66, 1, 0})), ZYMDB_LOCATION_BOARD) << "the switch";
}

TEST_F(ExampleServer, HasItsBootControllerOnTheBoard) {
  const auto& controller = at(machine_, {0, 3, 0, 0});
  EXPECT_EQ(machine_.location_of(controller), ZYMDB_LOCATION_BOARD);
  EXPECT_EQ(controller.device_key, controller.key.value);
  EXPECT_EQ(controller.designation, "Boot controller");
}

TEST_F(ExampleServer, TellsLinksFromTheCapabilities) {
  const auto& link = at(machine_, {0, 0xe5, 0, 0}).pci.link;
  EXPECT_EQ(link.width, 4);
  EXPECT_EQ(link.generation, 3);
  EXPECT_EQ(at(machine_, {0, 0xe2, 4, 0}).pci.link.max_width, 8);
  EXPECT_EQ(at(machine_, {0, 0x30, 4, 0}).pci.link.width, 0) << "nothing is in that slot";
}

TEST_F(ExampleServer, HasNoTwoDevicesUnderOneKey) {
  std::map<uint32_t, PciAddress> devices;
  for (const auto& function : *machine_.functions) {
    const auto [device, first] = devices.emplace(function.device_key, function.pci.address);
    EXPECT_TRUE(first || device->second.same_device(function.pci.address)) << to_string(function.pci.address);
  }
}

}  // namespace
}  // namespace zymdb::collect
