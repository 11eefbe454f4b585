#include <algorithm>

#include "commands/commands.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "show/memory_text.h"
#include "show/pci_text.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show gpus\n"
    "  zymdb show gpus --columns FUNCTION,NAME,MEMORY --no-headings\n"
    "  zymdb show gpus --json | jq '.gpus[] | select(.GPUChipManufacturer == \"NVIDIA\")'";

constexpr char kAction[] = "read the GPUs";

// A chip with the function that it is on; a function without chips is one record, too.
struct Record : _ZYMDB_GPU_Device, _ZYMDB_GPU_Chip {
  uint32_t PCIFuncKey = 0;
};

Value address(const Record& gpu) {
  return address_text(gpu.PCIFuncKey);
}

// Other writers may store a unit of their own with the number.
Value memory(const Record& gpu) {
  const std::string size(gpu.VideoMemorySize);
  if (size.empty() || size.find_first_not_of("0123456789") != std::string::npos) return size;
  return size_text(std::stoull(size));
}

constexpr Column<Record> kColumns[] = {
    derived<Record>("FUNCTION", "address of the PCI function", Shown::kByDefault, address),
    field<Record, &Record::PCIFuncKey, 8>("PCIFuncKey", "KEY", "function key"),
    field<Record, &Record::VideoMemoryType>("VideoMemoryType", "MEMTYPECODE", "video memory type code"),
    field<Record, &Record::VideoMemoryTypeName>("VideoMemoryTypeName", "MEMTYPE", "video memory type"),
    field<Record, &Record::VideoMemorySize>("VideoMemorySize", "MEMSIZE",
                                            "video memory, MiB; empty when not known"),
    derived<Record>("MEMORY", "what VideoMemorySize says", Shown::kByDefault, memory),
    field<Record, &Record::TotalGPUChipNumber>("TotalGPUChipNumber", "CHIPS", "chips of the function",
                                               Shown::kByDefault),
    long_text(
        field<Record, &Record::GPUChipName>("GPUChipName", "NAME", "the chip's name", Shown::kByDefault)),
    field<Record, &Record::GPUChipManufacturer>("GPUChipManufacturer", "MANUFACTURER", "manufacturer",
                                                Shown::kByDefault),
    field<Record, &Record::GPUChipModel>("GPUChipModel", "MODEL", "model", Shown::kByDefault),
    field<Record, &Record::GPUChipPartNumber>("GPUChipPartNumber", "PART", "part number"),
    field<Record, &Record::GPUChipSKU>("GPUChipSKU", "SKU", "stock keeping unit"),
    field<Record, &Record::GPUChipSerialNumber>("GPUChipSerialNumber", "SERIAL", "serial number"),
    field<Record, &Record::GPUChipFamily>("GPUChipFamily", "FAMILY", "family"),
    field<Record, &Record::GPUChipUniqueID>("GPUChipUniqueID", "UNIQUEID", "unique identifier"),
    field<Record, &Record::GPUChipFormFactorName>("GPUChipFormFactorName", "FORM", "form factor"),
    field<Record, &Record::GPUChipFormFactor>("GPUChipFormFactor", "FORMCODE", "form factor code"),
    field<Record, &Record::GPUChipIndex>("GPUChipIndex", "INDEX", "index of the chip on the function"),
    field<Record, &Record::GPUChipNumberOfEnabledCores>("GPUChipNumberOfEnabledCores", "CORES",
                                                        "enabled cores"),
    field<Record, &Record::ExternalBusClockSpeed>("ExternalBusClockSpeed", "BUSCLOCK",
                                                  "clock speed of the external bus"),
    field<Record, &Record::GPUChipMaxClockSpeed>("GPUChipMaxClockSpeed", "MAXCLOCK", "highest clock speed"),
    field<Record, &Record::GPUChipAddressWidth>("GPUChipAddressWidth", "ADDRESSWIDTH", "address width, bits"),
    field<Record, &Record::GPUChipDataWidth>("GPUChipDataWidth", "DATAWIDTH", "data width, bits"),
};

std::vector<_ZYMDB_GPU_Chip> read_chips(int key) {
  _ZYMDB_GPU_Chip_List list{};
  const int status = zymdb_get_gpu_chip_list(key, &list);
  auto chips = take_array(list.items, list.count);
  require_status(status, kAction);
  std::ranges::stable_sort(chips, {}, &_ZYMDB_GPU_Chip::GPUChipIndex);
  return chips;
}

void add_gpu(uint32_t function, std::vector<Record>& gpus) {
  const int key = static_cast<int>(function);
  _ZYMDB_GPU_Device device{};
  require_status(zymdb_get_gpu_device_info(key, &device), kAction);
  auto chips = read_chips(key);
  // A row's memory type always has a name; without a row the record stays as it was.
  const bool is_known = device.VideoMemoryTypeName[0] != '\0';
  if (is_known && chips.empty()) chips.emplace_back();
  for (const auto& chip : chips) gpus.push_back({device, chip, function});
}

std::vector<Record> read_gpus() {
  std::vector<Record> gpus;
  for (const auto& function : all_functions(kAction)) add_gpu(key_of(function), gpus);
  return gpus;
}

}  // namespace

void add_show_gpus(CommandTree& tree, CLI::App& show) {
  add_listing(tree, show, make_listing<Record>("gpus", "Graphics and accelerator chips", kColumns, read_gpus),
              kExamples);
}

}  // namespace zymdb::tool
