#include <algorithm>

#include "records/pci.h"
#include "records/text.h"

namespace zymdb::records {
namespace {

// A chip with the function that it is on; a function without chips is one record, too.
struct Gpu : _ZYMDB_GPU_Device, _ZYMDB_GPU_Chip {
  uint32_t PCIFuncKey = 0;
};

Value address(const Gpu& gpu) {
  return FunctionKey(gpu.PCIFuncKey).text();
}

// Other writers may store a unit of their own with the number.
Value memory(const Gpu& gpu) {
  const std::string size(gpu.VideoMemorySize);
  const bool is_number = !size.empty() && size.find_first_not_of("0123456789") == std::string::npos;
  return is_number ? Value(size_text(std::stoull(size))) : value_of(size);
}

constexpr Field<Gpu> kFields[] = {
    derived<Gpu>("Function", "FUNCTION", "address of the PCI function", address)
        .tells(Tells::kFunction)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(Gpu, PCIFuncKey, "KEY", "function key").hex(8).place(),
    ZYMDB_RECORD_FIELD(Gpu, VideoMemoryType, "MEMTYPECODE", "video memory type code").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, VideoMemoryTypeName, "MEMTYPE", "video memory type").unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(Gpu, VideoMemorySize, "MEMSIZE", "video memory").unit("MiB"),
    derived<Gpu>("VideoMemory", "MEMORY", "what VideoMemorySize says", memory).shown(),
    ZYMDB_RECORD_FIELD(Gpu, TotalGPUChipNumber, "CHIPS", "chips of the function").amount().shown(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipName, "NAME", "the chip's name")
        .tells(Tells::kName)
        .long_text()
        .shown()
        .model(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipManufacturer, "MANUFACTURER", "manufacturer")
        .tells(Tells::kMaker)
        .shown()
        .model(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipModel, "MODEL", "model").shown().model(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipPartNumber, "PART", "part number").model(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipSKU, "SKU", "stock keeping unit").model(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipSerialNumber, "SERIAL", "serial number").identity(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipFamily, "FAMILY", "family"),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipUniqueID, "UNIQUEID", "unique identifier").identity(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipFormFactorName, "FORM", "form factor").unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipFormFactor, "FORMCODE", "form factor code").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipIndex, "INDEX", "index of the chip on the function").place(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipNumberOfEnabledCores, "CORES", "enabled cores").amount().zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, ExternalBusClockSpeed, "BUSCLOCK", "clock speed of the external bus")
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipMaxClockSpeed, "MAXCLOCK", "highest clock speed").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipAddressWidth, "ADDRESSWIDTH", "address width")
        .unit("bits")
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(Gpu, GPUChipDataWidth, "DATAWIDTH", "data width").unit("bits").zero_is_unknown(),
};

std::vector<_ZYMDB_GPU_Chip> read_chips(const Reading& reading, int key) {
  _ZYMDB_GPU_Chip_List list{};
  const int status = zymdb_get_gpu_chip_list(key, &list);
  auto chips = take_array(list.items, list.count);
  reading.require(status);
  std::ranges::stable_sort(chips, {}, &_ZYMDB_GPU_Chip::GPUChipIndex);
  return chips;
}

void add_gpu(const Reading& reading, FunctionKey function, std::vector<Gpu>& gpus) {
  const int key = static_cast<int>(function.value);
  _ZYMDB_GPU_Device device{};
  reading.require(zymdb_get_gpu_device_info(key, &device));
  auto chips = read_chips(reading, key);
  // A row's memory type always has a name; without a row the record stays as it was.
  const bool is_known = device.VideoMemoryTypeName[0] != '\0';
  if (is_known && chips.empty()) chips.emplace_back();
  for (const auto& chip : chips) gpus.push_back({device, chip, function.value});
}

std::vector<Gpu> list_gpus() {
  const Reading reading("gpus");
  std::vector<Gpu> gpus;
  for (const auto& function : list_functions(reading)) add_gpu(reading, FunctionKey::of(function), gpus);
  reading.require_whole();
  return gpus;
}

}  // namespace

RecordType gpus() {
  return describe<Gpu>("gpus", "Graphics and accelerator chips", kFields, list_gpus);
}

}  // namespace zymdb::records
