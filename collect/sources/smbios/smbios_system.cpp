#include "collect/sources/smbios/smbios_system.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kTypeFirmware = 0;
constexpr uint8_t kTypeSystem = 1;
constexpr uint8_t kTypeBoard = 2;

constexpr size_t kUuid = 0x08;
constexpr size_t kUuidSize = 16;
constexpr unsigned kFirstLittleEndianVersion = 0x0206;

// Where each byte of the text stands in the structure: from version 2.6 on the first three numbers have their
// least significant byte first.
constexpr std::array<size_t, kUuidSize> kLittleEndian = {3, 2, 1,  0,  5,  4,  7,  6,
                                                         8, 9, 10, 11, 12, 13, 14, 15};

std::optional<std::string> uuid(const SmbiosStructure& system, unsigned version) {
  std::array<uint8_t, kUuidSize> bytes{};
  for (size_t i = 0; i < kUuidSize; ++i) {
    const size_t place = version >= kFirstLittleEndianVersion ? kLittleEndian[i] : i;
    const auto byte = system.field<uint8_t>(kUuid + place);
    if (!byte) return std::nullopt;
    bytes[i] = *byte;
  }
  std::string text;
  for (size_t i = 0; i < kUuidSize; ++i) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02x", bytes[i]);
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += digits.data();
  }
  return known_uuid(text);
}

const SmbiosStructure* first_of(const SmbiosTables& tables, uint8_t type) {
  const auto found = std::ranges::find(tables.structures(), type, &SmbiosStructure::type);
  return found == tables.structures().end() ? nullptr : &*found;
}

}  // namespace

std::vector<SmbiosSystem> decode_system(const SmbiosTables& tables) {
  SmbiosSystem system;
  const auto* const firmware = first_of(tables, kTypeFirmware);
  const auto* const itself = first_of(tables, kTypeSystem);
  const auto* const board = first_of(tables, kTypeBoard);
  if (firmware == nullptr && itself == nullptr && board == nullptr) return {};
  if (firmware != nullptr) {
    system.firmware_vendor = firmware->text(0x04);
    system.firmware_version = firmware->text(0x05);
    system.firmware_date = firmware->text(0x08);
  }
  if (itself != nullptr) {
    system.manufacturer = itself->text(0x04);
    system.model = itself->text(0x05);
    system.version = itself->text(0x06);
    system.serial_number = itself->text(0x07);
    system.sku = itself->text(0x19);
    system.family = itself->text(0x1A);
    system.uuid = uuid(*itself, tables.version());
  }
  if (board != nullptr) {
    system.board_manufacturer = board->text(0x04);
    system.board_model = board->text(0x05);
    system.board_version = board->text(0x06);
    system.board_serial_number = board->text(0x07);
  }
  return {system};
}

}  // namespace zymdb::collect
