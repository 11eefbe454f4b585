#include "collect/sources/smbios/smbios_decode.h"

#include "collect/sources/smbios/smbios_fields.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kTypeFirmware = 0;
constexpr uint8_t kTypeProcessor = 4;
constexpr uint8_t kTypeCache = 7;
constexpr uint8_t kTypeSlot = 9;
constexpr uint8_t kTypeOnboardDevice = 41;

constexpr uint8_t kFamilyInSecondField = 0xFE;
constexpr uint8_t kCountInSecondField = 0xFF;
constexpr uint16_t kNoHandle = 0xFFFF;
constexpr uint8_t kNoRelease = 0xFF;

// Offsets of the handles of a processor's caches, by level.
constexpr size_t kCacheHandles[] = {0x1A, 0x1C, 0x1E};

// A cache size: 64 KB steps when the top bit is set; too large for 15 bits, it is in a second field.
std::optional<uint32_t> cache_size(const SmbiosStructure& cache, size_t offset, size_t second) {
  const auto size = cache.field<uint16_t>(offset);
  const auto extended = cache.field<uint32_t>(second);
  if (!size) return std::nullopt;
  const bool in_second = *size == 0xFFFF && extended;
  const uint32_t value = in_second ? *extended & 0x7FFFFFFFU : *size & 0x7FFFU;
  const bool coarse = in_second ? *extended >> 31 != 0 : *size >> 15 != 0;
  return coarse ? value * 64 : value;
}

SmbiosCache decode_cache(const SmbiosStructure& cache) {
  return {.max_size = cache_size(cache, 0x07, 0x13),
          .installed = cache_size(cache, 0x09, 0x17),
          .type = cache.field<uint8_t>(0x11),
          .configuration = cache.field<uint16_t>(0x05)};
}

SmbiosCache find_cache(const SmbiosTables& tables, uint16_t handle) {
  const auto* cache = find_structure(tables, kTypeCache, handle);
  return cache == nullptr ? SmbiosCache{} : decode_cache(*cache);
}

// A count of cores or threads; from 255 on it is in a second field.
std::optional<uint16_t> count(const SmbiosStructure& processor, size_t offset, size_t second) {
  const auto small = nonzero<uint8_t>(processor, offset);
  const auto large = nonzero<uint16_t>(processor, second);
  if (small == kCountInSecondField && large) return large;
  return small ? std::optional<uint16_t>(*small) : std::nullopt;
}

std::optional<uint16_t> family(const SmbiosStructure& processor) {
  const auto small = processor.field<uint8_t>(0x06);
  if (small == kFamilyInSecondField) return processor.field<uint16_t>(0x28);
  return small ? std::optional<uint16_t>(*small) : std::nullopt;
}

void decode_chip(const SmbiosTables& tables, const SmbiosStructure& structure, SmbiosProcessor& processor) {
  processor.id = structure.field<uint64_t>(0x08);
  processor.family = family(structure);
  processor.manufacturer = structure.text(0x07);
  processor.version = structure.text(0x10);
  processor.voltage = nonzero<uint8_t>(structure, 0x11);
  processor.external_clock = nonzero<uint16_t>(structure, 0x12);
  processor.max_speed = nonzero<uint16_t>(structure, 0x14);
  processor.current_speed = nonzero<uint16_t>(structure, 0x16);
  processor.serial_number = structure.text(0x20);
  processor.asset_tag = structure.text(0x21);
  processor.part_number = structure.text(0x22);
  processor.core_count = count(structure, 0x23, 0x2A);
  processor.cores_enabled = count(structure, 0x24, 0x2C);
  processor.thread_count = count(structure, 0x25, 0x2E);
  processor.characteristics = structure.field<uint16_t>(0x26);
  for (size_t level = 0; level < processor.caches.size(); ++level) {
    const auto handle = structure.field<uint16_t>(kCacheHandles[level]).value_or(kNoHandle);
    if (handle != kNoHandle) processor.caches[level] = find_cache(tables, handle);
  }
}

SmbiosProcessor decode_processor(const SmbiosTables& tables, const SmbiosStructure& structure) {
  SmbiosProcessor processor;
  processor.socket = structure.text(0x04);
  processor.type = structure.field<uint8_t>(0x05);
  processor.status = structure.field<uint8_t>(0x18);
  processor.upgrade = structure.field<uint8_t>(0x19);
  if (processor.populated()) decode_chip(tables, structure, processor);
  return processor;
}

// Segment, bus, device and function. Firmware that has no address to state writes ones or zeros.
std::optional<PciAddress> pci_address(const SmbiosStructure& structure, size_t offset) {
  const auto segment = structure.field<uint16_t>(offset);
  const auto bus = structure.field<uint8_t>(offset + 2);
  const auto position = structure.field<uint8_t>(offset + 3);
  if (!segment || !bus || !position) return std::nullopt;
  if (*bus == 0xFF || *position == 0xFF || (*bus == 0 && *position == 0)) return std::nullopt;
  return PciAddress{*segment, *bus, static_cast<uint8_t>(*position >> 3),
                    static_cast<uint8_t>(*position & 7)};
}

SmbiosSlot decode_slot(const SmbiosTables&, const SmbiosStructure& structure) {
  return {.designation = structure.text(0x04),
          .type = structure.field<uint8_t>(0x05),
          .data_bus_width = structure.field<uint8_t>(0x06),
          .id = structure.field<uint16_t>(0x09).value_or(0),
          .address = pci_address(structure, 0x0D),
          .usage = structure.field<uint8_t>(0x07).value_or(0)};
}

SmbiosOnboardDevice decode_onboard_device(const SmbiosTables&, const SmbiosStructure& structure) {
  return {.designation = structure.text(0x04), .address = pci_address(structure, 0x07)};
}

std::optional<uint8_t> release(const SmbiosStructure& structure, size_t offset) {
  const auto number = structure.field<uint8_t>(offset);
  return number == kNoRelease ? std::nullopt : number;
}

SmbiosFirmware decode_one_firmware(const SmbiosTables&, const SmbiosStructure& structure) {
  return {.vendor = structure.text(0x04),
          .version = structure.text(0x05),
          .release_date = structure.text(0x08),
          .major_release = release(structure, 0x14),
          .minor_release = release(structure, 0x15),
          .controller_major_release = release(structure, 0x16),
          .controller_minor_release = release(structure, 0x17)};
}

}  // namespace

std::vector<SmbiosFirmware> decode_firmware(const SmbiosTables& tables) {
  return decode_all(tables, kTypeFirmware, decode_one_firmware);
}

std::vector<SmbiosProcessor> decode_processors(const SmbiosTables& tables) {
  return decode_all(tables, kTypeProcessor, decode_processor);
}

std::vector<SmbiosSlot> decode_slots(const SmbiosTables& tables) {
  return decode_all(tables, kTypeSlot, decode_slot);
}

std::vector<SmbiosOnboardDevice> decode_onboard_devices(const SmbiosTables& tables) {
  return decode_all(tables, kTypeOnboardDevice, decode_onboard_device);
}

}  // namespace zymdb::collect
