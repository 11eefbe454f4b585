#include "collect/sources/smbios/smbios_memory.h"

#include "collect/sources/smbios/smbios_fields.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kTypeMemoryArray = 16;
constexpr uint8_t kTypeMemoryDevice = 17;

constexpr uint16_t kSizeInSecondField = 0x7FFF;
constexpr uint16_t kSizeInKilobytes = 0x8000;
constexpr uint16_t kSpeedInSecondField = 0xFFFF;
constexpr unsigned kMegabyteShift = 20;

constexpr uint16_t kNonVolatile = 0x1000;
constexpr uint8_t kTechnologyUnknown = 2;
constexpr uint8_t kTechnologyNvdimmN = 4;     // and from here on persistent: NVDIMM-F, NVDIMM-P,
constexpr uint8_t kTechnologyPersistent = 7;  // persistent memory

// Megabytes, or kilobytes by the top bit; too large for 15 bits, it is in a second field, where there is one.
std::optional<uint32_t> size(const SmbiosStructure& device) {
  const auto first = unless_ones<uint16_t>(device, 0x0C);
  if (!first) return std::nullopt;
  const auto second = device.field<uint32_t>(0x1C);
  if (*first == kSizeInSecondField && second) {
    const uint32_t megabytes = *second & 0x7FFFFFFFU;
    return megabytes == 0 ? std::nullopt : std::optional(megabytes);
  }
  if ((*first & kSizeInKilobytes) == 0) return *first;
  const uint32_t megabytes = (*first & 0x7FFFU) >> 10;
  return megabytes == 0 ? std::nullopt : std::optional(megabytes);
}

std::optional<uint16_t> width(const SmbiosStructure& device, size_t offset) {
  const auto bits = unless_ones<uint16_t>(device, offset);
  return bits == uint16_t{0} ? std::nullopt : bits;
}

// From 65535 MT/s on it is in a second field.
std::optional<uint32_t> speed(const SmbiosStructure& device, size_t offset, size_t second) {
  const auto first = nonzero<uint16_t>(device, offset);
  if (first != kSpeedInSecondField) return first;
  const auto large = device.field<uint32_t>(second);
  return large && (*large & 0x7FFFFFFFU) != 0 ? std::optional(*large & 0x7FFFFFFFU) : std::nullopt;
}

std::optional<uint16_t> array(const SmbiosTables& tables, const SmbiosStructure& device) {
  const auto handle = device.field<uint16_t>(0x04);
  const bool described = handle && find_structure(tables, kTypeMemoryArray, *handle) != nullptr;
  return described ? handle : std::nullopt;
}

bool is_persistent(const SmbiosStructure& device) {
  const auto technology = device.field<uint8_t>(0x28).value_or(0);
  if (technology > kTechnologyUnknown)
    return technology >= kTechnologyNvdimmN && technology <= kTechnologyPersistent;
  return (device.field<uint16_t>(0x13).value_or(0) & kNonVolatile) != 0;
}

// A logical device has a size of its own.
SmbiosPersistentMemory decode_persistent(const SmbiosStructure& device, std::optional<uint32_t> size) {
  SmbiosPersistentMemory memory;
  memory.firmware_version = device.text(0x2B);
  memory.non_volatile = unless_ones<uint64_t>(device, 0x34);
  memory.volatile_part = unless_ones<uint64_t>(device, 0x3C);
  const auto logical = unless_ones<uint64_t>(device, 0x4C);
  if (logical.value_or(0) != 0) {
    memory.capacity = logical;
  } else if (size) {
    memory.capacity = uint64_t{*size} << kMegabyteShift;
  }
  return memory;
}

void decode_module(const SmbiosStructure& structure, SmbiosMemoryDevice& device) {
  device.total_width = width(structure, 0x08);
  device.data_width = width(structure, 0x0A);
  device.type = structure.field<uint8_t>(0x12);
  device.type_detail = structure.field<uint16_t>(0x13);
  device.max_speed = speed(structure, 0x15, 0x54);
  device.configured_speed = speed(structure, 0x20, 0x58);
  device.manufacturer = structure.text(0x17);
  device.serial_number = structure.text(0x18);
  device.asset_tag = structure.text(0x19);
  device.part_number = structure.text(0x1A);
  device.attributes = nonzero<uint8_t>(structure, 0x1B);
  if (is_persistent(structure)) device.persistent = decode_persistent(structure, device.size);
}

SmbiosMemoryDevice decode_device(const SmbiosTables& tables, const SmbiosStructure& structure) {
  SmbiosMemoryDevice device;
  device.array = array(tables, structure);
  device.locator = structure.text(0x10);
  device.bank = structure.text(0x11);
  device.form_factor = structure.field<uint8_t>(0x0E);
  device.size = size(structure);
  if (device.populated()) decode_module(structure, device);
  return device;
}

}  // namespace

std::vector<SmbiosMemoryDevice> decode_memory(const SmbiosTables& tables) {
  return decode_all(tables, kTypeMemoryDevice, decode_device);
}

}  // namespace zymdb::collect
