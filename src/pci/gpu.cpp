#include <utility>

#include "db/code_text.h"
#include "db/query.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "db/values.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

constexpr CodeText kVideoMemoryTypes[] = {
    {1, "Reserved"},
    {2, "Reserved"},
    {3, "VRAM"},
    {4, "DRAM"},
    {5, "SRAM"},
    {6, "WRAM"},
    {7, "EDO RAM"},
    {8, "Burst Synchronous"},
    {9, "Pipelined Burst SRAM"},
    {10, "CDRAM"},
    {11, "3DRAM"},
    {12, "SDRAM"},
    {13, "SGRAM"},
};

constexpr CodeText kChipFormFactors[] = {
    {2, "SIP"},    {3, "DIP"},   {4, "ZIP"},   {5, "SOJ"},    {6, "Proprietaty"},  // as it is always shown
    {7, "SIMM"},   {8, "DIMM"},  {9, "TSOP"},  {10, "PGA"},   {11, "RIMM"},       {12, "SODIMM"},
    {13, "SRIMM"}, {14, "SMD"},  {15, "SSMP"}, {16, "QFP"},   {17, "TQFP"},       {18, "SOIC"},
    {19, "LCC"},   {20, "PLCC"}, {21, "BGA"},  {22, "FPBGA"}, {23, "LGA"},
};

using Device = _ZYMDB_GPU_Device;
constexpr auto kDeviceColumns = columns_of<Device>({
    ZYMDB_NUMBER_IN_TEXT("VideoMemoryType", Device, VideoMemoryType, 0),
    ZYMDB_FIELD(Device, VideoMemorySize),
    ZYMDB_FIELD(Device, TotalGPUChipNumber),
});

using Chip = _ZYMDB_GPU_Chip;
constexpr auto kChipColumns = columns_of<Chip>({
    ZYMDB_FIELD(Chip, GPUChipName),
    ZYMDB_FIELD(Chip, GPUChipManufacturer),
    ZYMDB_FIELD(Chip, GPUChipModel),
    ZYMDB_FIELD(Chip, GPUChipPartNumber),
    ZYMDB_FIELD(Chip, GPUChipSKU),
    ZYMDB_FIELD(Chip, GPUChipSerialNumber),
    ZYMDB_FIELD(Chip, GPUChipFamily),
    ZYMDB_FIELD(Chip, GPUChipUniqueID),
    ZYMDB_NUMBER_IN_TEXT("GPUChipFormFactor", Chip, GPUChipFormFactor, 0),
    ZYMDB_FIELD(Chip, GPUChipIndex),
    ZYMDB_FIELD(Chip, GPUChipNumberOfEnabledCores),
    ZYMDB_FIELD(Chip, ExternalBusClockSpeed),
    ZYMDB_FIELD(Chip, GPUChipMaxClockSpeed),
    ZYMDB_FIELD(Chip, GPUChipAddressWidth),
    ZYMDB_FIELD(Chip, GPUChipDataWidth),
});

// Writes one column of the NVIDIA card on a bus. `operation` names the caller in the system log.
int update_nvidia_card(const char* operation, const char* table, const char* column, const char* text,
                       int bus) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  // A missing text counts as a missing database.
  if (handle == nullptr || text == nullptr) return ZYM_DB_STATUS_NO_DB;

  const Statement<256> statement("select HardwareId from PCIs where BusNo=%d;", bus);
  int status = ZYM_DB_STATUS_OK;
  const uint32_t hardware_id = select_number(handle, statement, status);
  if (hardware_id == 0) {
    log_to_system(kLogError, "%s: rc = %d, sql failed. %s\n\n", operation, status, statement.text());
    return ZYM_DB_STATUS_NOT_FOUND;
  }

  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;
  values.clear();
  values.put(column, text);
  return values.update(table, Filter<256>("HardwareId=%u AND Manufacture=\"NVIDIA\"", hardware_id));
}

}  // namespace

int zymdb_get_gpu_device_info(int funkey, _ZYMDB_GPU_Device* dev) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (dev == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIGPU", kDeviceColumns, Filter<128>("PCIFuncKey=%d", funkey));
  if (query.step() == ZYM_DB_STATUS_ROW) {
    query.read_columns(kDeviceColumns, dev);
    copy_text(dev->VideoMemoryTypeName, text_of(kVideoMemoryTypes, dev->VideoMemoryType));
  }
  return query.status();
}

int zymdb_get_gpu_chip_list(int funkey, _ZYMDB_GPU_Chip_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIGPUChip", kChipColumns, Filter<128>("PCIFuncKey=%d", funkey));
  if (query.status() != ZYM_DB_STATUS_OK) return fail_list(list, query.status());
  if (!query.has_result()) return ZYM_DB_STATUS_OK;
  const unsigned room = query.row_count();
  CallerArray<Chip> chips = allocate_array<Chip>(room);
  if (chips == nullptr) return fail_list(list, ZYM_DB_STATUS_NO_MEMORY);
  // A step that fails, for whatever reason, leaves the list as it was.
  return fill_list(query, std::move(chips), room, list->count, list->items, [&](Chip& chip) {
    query.read_columns(kChipColumns, &chip);
    copy_text(chip.GPUChipFormFactorName, text_of(kChipFormFactors, chip.GPUChipFormFactor));
    return true;
  });
}

int zymdb_update_nvidia_gpu_fw_version(const char* text, int bus) {
  return update_nvidia_card("zymdb_update_nvidia_gpu_fw_version", "Firmwares", "VersionString", text, bus);
}

int zymdb_update_nvidia_gpu_fw_release_date(const char* text, int bus) {
  return update_nvidia_card("zymdb_update_nvidia_gpu_fw_release_date", "Firmwares", "ReleaseDate", text, bus);
}

int zymdb_update_nvidia_gpu_serial_number(const char* text, int bus) {
  return update_nvidia_card("zymdb_update_nvidia_gpu_serial_number", "VPDs", "SerialNo", text, bus);
}
