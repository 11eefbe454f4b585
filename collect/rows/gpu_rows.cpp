#include "collect/rows/gpu_rows.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "collect/rows/function_view.h"
#include "collect/rows/row_columns.h"

namespace zymdb::collect {
namespace {

constexpr unsigned kMegabyteShift = 20;

Value known(std::string_view text) {
  return text.empty() ? Value() : Value::text(std::string(text));
}

// A text of megabytes. Less than one is as good as nothing.
Value memory_size(const FunctionView& view) {
  const uint64_t megabytes = view.pci().video_memory.value_or(0) >> kMegabyteShift;
  return megabytes == 0 ? Value() : Value::text(std::to_string(megabytes));
}

constexpr Column<FunctionView> kDeviceColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"VideoMemorySize", Role::kValue, Kind::kText}, memory_size},
    {{"TotalGPUChipNumber", Role::kValue}, [](const FunctionView&) { return Value::number(1); }},
    others_column<FunctionView>("VideoMemoryType", Kind::kText),
};

std::string_view chip_name(const FunctionView& view) {
  return view.names.device(view.pci().vendor, view.pci().device);
}

// "GA100 [A100 PCIe 40GB]" is the chip GA100 on a card of that name.
Value model(const FunctionView& view) {
  const std::string_view name = chip_name(view);
  const size_t card = name.find(" [");
  return card == std::string_view::npos ? Value() : known(name.substr(0, card));
}

constexpr Column<FunctionView> kChipColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"GPUChipIndex", Role::kKey}, [](const FunctionView&) { return Value::number(0); }},
    {{"GPUChipName", Role::kValue, Kind::kText},
     [](const FunctionView& view) { return known(chip_name(view)); }},
    {{"GPUChipManufacturer", Role::kValue, Kind::kText},
     [](const FunctionView& view) { return known(vendor_name(view.names, view.pci().vendor)); }},
    {{"GPUChipModel", Role::kValue, Kind::kText}, model},
    others_column<FunctionView>("GPUChipFormFactor", Kind::kText),
};

// Nothing that the bus shows tells a memory type or a form factor: a row that has one is another writer's.
bool is_told(const Value& value) {
  return !value.is_null();
}

}  // namespace

std::vector<TableContent> gpu_rows(const Machine& machine, const PciIds& names) {
  auto devices = make_content("PCIGPU", kDeviceColumns);
  auto chips = make_content("PCIGPUChip", kChipColumns);
  devices.is_foreign = where("VideoMemoryType", is_told);
  chips.is_foreign = where("GPUChipFormFactor", is_told);
  devices.function_column = chips.function_column = "PCIFuncKey";
  for (const auto& function : *machine.functions) {
    if (!function.pci.has_video_memory()) continue;
    const FunctionView view(machine, function, names);
    add_row(devices, kDeviceColumns, view, true);
    add_row(chips, kChipColumns, view, true);
  }
  return {std::move(devices), std::move(chips)};
}

}  // namespace zymdb::collect
