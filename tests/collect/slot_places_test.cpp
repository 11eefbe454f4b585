// What SMBIOS's slots place, where firmware states addresses, uses and segments that are not so.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "collect/model/machine.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kUsageInUse = 4;
constexpr uint8_t kUsageAvailable = 3;

// A slot (type 9) or a device on the board (type 41), as SMBIOS stores it.
struct Structure {
  uint8_t type;
  std::string formatted;
};

char byte(unsigned value) {
  return static_cast<char>(value);
}

std::string address_bytes(unsigned segment, const PciAddress& address) {
  return {byte(segment), byte(segment >> 8), byte(address.bus),
          byte(unsigned{address.device} << 3 | address.function)};
}

Structure slot(unsigned id, const PciAddress& address, uint8_t usage = kUsageInUse, unsigned segment = 0) {
  return {9, std::string{'\1', byte(0xA5), '\x0B', byte(usage), '\4', byte(id), '\0', '\0', '\0'} +
                 address_bytes(segment, address)};
}

Structure onboard(const PciAddress& address, unsigned segment = 0) {
  return {41, std::string{'\1', byte(0x85), '\1'} + address_bytes(segment, address)};
}

SmbiosTables tables_of(const std::vector<Structure>& structures) {
  std::string table;
  for (const auto& [type, formatted] : structures)
    table += std::string{byte(type), byte(static_cast<unsigned>(formatted.size()) + 4), '\0', '\1'} +
             formatted + std::string("place\0\0", 7);
  table += std::string("\x7f\x04\0\0\0\0", 6);
  std::string entry("_SM3_\0\x18\x03\x03\0\x01\0\0\0\0\0\x20\0\0\0\0\0\0\0", 24);
  entry[12] = byte(static_cast<unsigned>(table.size()));
  entry[13] = byte(static_cast<unsigned>(table.size()) >> 8);
  entry[5] = byte(0U - checksum(as_bytes(entry)));
  return SmbiosTables::parse_dump(entry + std::string(8, '\0') + table, "tables");
}

PciFunction endpoint(PciAddress address) {
  PciFunction function;
  function.address = address;
  function.vendor = 0x8086;
  function.device = 0x1533;
  function.class_code = 0x020000;
  return function;
}

PciFunction port(PciAddress address, uint8_t secondary, PortType type = PortType::kRootPort) {
  PciFunction function = endpoint(address);
  function.class_code = 0x060400;
  function.secondary_bus = secondary;
  function.port_type = type;
  return function;
}

Machine machine_of(std::vector<PciFunction> functions, const std::vector<Structure>& structures) {
  Findings findings;
  findings.functions = std::move(functions);
  findings.smbios = tables_of(structures);
  return build_machine(std::move(findings));
}

// The slot number of a function; 0 on the board.
unsigned place(const Machine& machine, PciAddress address) {
  for (const auto& function : machine.functions.value()) {
    if (function.pci.address != address) continue;
    const Slot* slot = machine.slot_of(function);
    return slot == nullptr ? 0 : slot->number.value();
  }
  ADD_FAILURE() << "no function " << to_string(address);
  return 0;
}

constexpr PciAddress kPort{0, 0, 0x1c, 0};
constexpr PciAddress kHiddenPort{0, 0, 0x1c, 6};
constexpr PciAddress kCard{0, 3, 0, 0};

TEST(SlotPlaces, AHiddenRootPortClaimsNothingOfThePortsBesideIt) {
  for (const uint8_t usage : {kUsageAvailable, kUsageInUse})
    EXPECT_EQ(place(machine_of({port(kPort, 3), endpoint(kCard)}, {slot(2, kHiddenPort, usage)}), kCard), 0U);
}

TEST(SlotPlaces, AHiddenPortClaimsNothingWhereADumpShowsNoCapabilities) {
  const auto machine =
      machine_of({port(kPort, 3, PortType::kUnknown), endpoint(kCard)}, {slot(2, kHiddenPort)});
  EXPECT_EQ(place(machine, kCard), 0U);
}

TEST(SlotPlaces, ACardMayStateAFunctionThatItDoesNotHave) {
  const PciAddress stated{0, 3, 0, 4};
  const std::vector<PciFunction> nic{port(kPort, 3), endpoint(kCard)};
  EXPECT_EQ(place(machine_of(nic, {slot(2, stated)}), kCard), 2U);
  const PciAddress below{0, 4, 0, 0};
  const std::vector<PciFunction> with_switch{port(kPort, 3), port(kCard, 4, PortType::kUpstream),
                                             endpoint(below)};
  EXPECT_EQ(place(machine_of(with_switch, {slot(2, stated)}), below), 2U);
}

TEST(SlotPlaces, ASlotThatIsSaidToBeEmptyTakesNothingByAFunctionThatIsNotThere) {
  const auto machine =
      machine_of({port(kPort, 3), endpoint(kCard)}, {slot(2, {0, 3, 0, 4}, kUsageAvailable)});
  EXPECT_EQ(place(machine, kCard), 0U);
}

TEST(SlotPlaces, ADeviceThatIsPlainlyThereIsInASlotThatIsSaidToBeEmpty) {
  const std::vector<PciFunction> functions{port(kPort, 3), endpoint(kCard)};
  EXPECT_EQ(place(machine_of(functions, {slot(2, kCard, kUsageAvailable)}), kCard), 2U);
  EXPECT_EQ(place(machine_of(functions, {slot(2, kPort, kUsageAvailable)}), kCard), 2U);
}

TEST(SlotPlaces, ADeviceOnTheBoardIsInNoSlotThatIsSaidToBeEmpty) {
  const std::vector<PciFunction> functions{port(kPort, 3), endpoint(kCard), endpoint({0, 3, 0, 1})};
  const auto empty = machine_of(functions, {slot(2, kPort, kUsageAvailable), onboard(kCard)});
  EXPECT_EQ(place(empty, kCard), 0U);
  EXPECT_EQ(place(empty, {0, 3, 0, 1}), 0U);
  EXPECT_EQ(place(machine_of(functions, {slot(2, kPort), onboard(kCard)}), kCard), 2U);
}

TEST(SlotPlaces, ASegmentThatTheMachineDoesNotHaveIsTheOneThatHasTheFunction) {
  for (const unsigned segment : {0xFFFFU, 0xFF00U, 0x00C0U}) {
    const auto machine = machine_of({port(kPort, 3), endpoint(kCard), endpoint({1, 5, 0, 0})},
                                    {slot(2, kCard, kUsageInUse, segment), onboard({0, 5, 0, 0}, segment)});
    EXPECT_EQ(place(machine, kCard), 2U) << segment;
    EXPECT_EQ(machine.functions->back().designation, "place") << segment;
  }
}

TEST(SlotPlaces, ASegmentIsNotGuessedWhereSeveralHaveTheFunctionOrItIsThere) {
  const std::vector<PciFunction> functions{port(kPort, 3), endpoint(kCard), endpoint({1, 3, 0, 0}),
                                           endpoint({0, 7, 0, 0})};
  EXPECT_EQ(place(machine_of(functions, {slot(2, kCard, kUsageInUse, 0xFFFF)}), kCard), 0U);
  EXPECT_EQ(place(machine_of(functions, {slot(2, {0, 7, 0, 0}, kUsageInUse, 1)}), {0, 7, 0, 0}), 0U);
}

TEST(SlotPlaces, AnAddressStatedInTwoSegmentsBelongsToNoSlot) {
  const auto machine =
      machine_of({port(kPort, 3), endpoint(kCard)}, {slot(2, kCard), slot(3, kCard, kUsageInUse, 0xFFFF)});
  EXPECT_EQ(place(machine, kCard), 0U);
}

}  // namespace
}  // namespace zymdb::collect
