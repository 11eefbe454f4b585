#include "collect/rows/memory_rows.h"

#include <cstdint>
#include <string>

#include "collect/rows/row_columns.h"
#include "collect/sources/smbios/memory_position.h"

namespace zymdb::collect {
namespace {

using Device = SmbiosMemoryDevice;
using Persistent = SmbiosPersistentMemory;

struct Module {
  const Device& device;
  uint32_t slot;
  MemoryPosition position;
};

template <auto Field>
Value device_number(const Module& module) {
  return number_or_null(module.device.*Field);
}

template <auto Field>
Value device_text(const Module& module) {
  return text_or_null(module.device.*Field);
}

template <auto Field>
Value position_number(const Module& module) {
  return number_or_null(module.position.*Field);
}

template <auto Field>
Value capacity(const Module& module) {
  return number_or_null(module.device.persistent.*Field);
}

constexpr Column<Module> kMemoryColumns[] = {
    {{"SlotNo", Role::kKey}, [](const Module& module) { return Value::number(module.slot); }},
    {{"ArrayId", Role::kValue}, device_number<&Device::array>},
    {{"TotalWidth", Role::kValue}, device_number<&Device::total_width>},
    {{"DataWidth", Role::kValue}, device_number<&Device::data_width>},
    {{"MemSize", Role::kValue}, device_number<&Device::size>},
    {{"FormFactor", Role::kValue}, device_number<&Device::form_factor>},
    {{"MemType", Role::kValue}, device_number<&Device::type>},
    {{"TypeDetail", Role::kValue}, device_number<&Device::type_detail>},
    {{"MaxSpeed", Role::kValue}, device_number<&Device::max_speed>},
    {{"ClockSpeed", Role::kValue}, device_number<&Device::configured_speed>},
    {{"DevLocator", Role::kValue, Kind::kText}, device_text<&Device::locator>},
    {{"BankLocator", Role::kValue, Kind::kText}, device_text<&Device::bank>},
    {{"Manufacturer", Role::kKey, Kind::kText}, device_text<&Device::manufacturer>},
    {{"SerialNo", Role::kKey, Kind::kText}, device_text<&Device::serial_number>},
    {{"PartNo", Role::kKey, Kind::kText}, device_text<&Device::part_number>},
    {{"AssetTag", Role::kValue, Kind::kText}, device_text<&Device::asset_tag>},
    {{"Attributes", Role::kValue}, device_number<&Device::attributes>},
    {{"NodeIndex", Role::kValue}, only_node},
    {{"Capacity", Role::kValue}, capacity<&Persistent::capacity>},
    {{"MemCapacity", Role::kValue}, capacity<&Persistent::volatile_part>},
    {{"AppDirCap", Role::kValue}, capacity<&Persistent::non_volatile>},
    {{"CPUIndex", Role::kValue}, position_number<&MemoryPosition::processor>},
    {{"iMCNum", Role::kValue}, position_number<&MemoryPosition::controller>},
    {{"ChannelNum", Role::kValue}, position_number<&MemoryPosition::channel>},
    {{"DimmNum", Role::kValue}, position_number<&MemoryPosition::module>},
    {{"FirmwareVersion", Role::kValue, Kind::kText},
     [](const Module& module) { return text_or_null(module.device.persistent.firmware_version); }},
};

}  // namespace

TableContent memory_rows(const std::vector<SmbiosMemoryDevice>& memory) {
  auto content = make_content("Memory", kMemoryColumns);
  std::vector<MemoryPosition> positions;
  for (const auto& device : memory)
    positions.push_back(memory_position(device.locator.value_or(""), device.bank.value_or("")));
  forget_shared_numbers(positions);
  for (uint32_t i = 0; i < memory.size(); ++i)
    add_row(content, kMemoryColumns, {memory[i], i + 1, positions[i]}, true);
  return content;
}

}  // namespace zymdb::collect
