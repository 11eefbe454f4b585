#include <limits.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "db/known_devices.h"
#include "db/query.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "firmware/classification.h"
#include "firmware/pldm_list.h"
#include "zymdb_firmware.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

// The card: its vendor is also its subsystem's vendor.
constexpr unsigned kVendor = ZYMDB_VENDOR_DPU;
constexpr unsigned kSubDevice = 0xA2D4;
constexpr char kSoftwareId[] = "15B3A2D4";
constexpr uint32_t kPldmDeviceType = 15;

_ZYMDB_PCI_Firmware uefi_component(const char* version) {
  _ZYMDB_PCI_Firmware component{};
  component.Classification = kClassificationUefi;
  std::strcpy(component.FirmwareName, "BlueField UEFI");
  std::strcpy(component.Description, "UEFI on BlueField ARM Cores");
  std::strcpy(component.Manufacture, "Mellanox Technologies");
  std::strcpy(component.SoftwareID, kSoftwareId);
  std::snprintf(component.VersionString, 32, "%s", version);
  return component;
}

// Writes the component to each function; the first failure ends that, and only the log tells.
void write_component(std::span<const uint32_t> functions, unsigned slot,
                     const _ZYMDB_PCI_Firmware& component) {
  for (const uint32_t funkey : functions) {
    const int status = zymdb_insert_or_update_firmware_info(funkey, &component);
    if (status == ZYM_DB_STATUS_OK) continue;
    log_to_system(kLogError,
                  "%s: zymdb_insert_or_update_firmware_info failed, slot %u, funkey 0x%x, rc %d\n\n",
                  "zymdb_update_dpu_uefi_version", slot, funkey, status);
    break;
  }
}

// A single row becomes the DPU's UEFI row whatever it held, but for its name, place and maker.
void make_uefi_row(_ZYMDB_PLDM_Firmware& row) {
  row.DeviceType = kPldmDeviceType;
  std::strcpy(row.SoftwareID, kSoftwareId);
  for (char* text : {row.PendingVersionString, row.PkgVersionString, row.ReleaseDate, row.PendingReleaseDate,
                     row.UpdateErrString})
    text[0] = '\0';
  row.UpdateSupport = row.Updated = row.UpdateAuxInfo = row.UpdateErrCode = 0;
  row.UpdateMethod = 0;
  row.Status = 0;
}

// The row that tells the DPU's UEFI version: the only one, or the first of its type; null when there is none.
_ZYMDB_PLDM_Firmware* uefi_row(std::span<_ZYMDB_PLDM_Firmware> rows) {
  if (rows.size() == 1) {
    make_uefi_row(rows[0]);
    return &rows[0];
  }
  for (_ZYMDB_PLDM_Firmware& row : rows)
    if (row.DeviceType == kPldmDeviceType) return &row;
  return nullptr;
}

template <size_t N>
int log_not_found(int status, const Statement<N>& statement) {
  log_to_system(kLogError, "%s: rc = %d, sql failed. %s\n\n", "zymdb_get_dpu_uefi_version", status,
                statement.text());
  return ZYM_DB_STATUS_NOT_FOUND;
}

// One byte of the buffer is never used.
int bound_of(unsigned size) {
  return static_cast<int>(std::clamp(size, 1u, unsigned{INT_MAX}) - 1);
}

}  // namespace

int zymdb_update_dpu_uefi_version(unsigned int slotNo, const char* version) {
  Filter<64> filter("Location=1 and SlotNo=%u and DeviceId=%u", slotNo, kDpuDevice);
  _ZYMDB_PCI_FunKey_List keys{};
  const int found = zymdb_get_pci_funkey_list_by_filter(filter.data(), &keys);
  const CallerArray<uint32_t> functions(keys.keys);
  if (found != ZYM_DB_STATUS_OK || keys.count == 0) return ZYM_DB_STATUS_NOT_FOUND;

  const _ZYMDB_PCI_Firmware component = uefi_component(version != nullptr ? version : "");
  write_component({keys.keys, keys.count}, slotNo, component);

  _ZYMDB_PLDM_Firmware_List list{};
  const int status = list_pldm_firmware(&list, filter);
  const CallerArray<_ZYMDB_PLDM_Firmware> rows(list.Firmwares);
  if (status != ZYM_DB_STATUS_OK || list.Count == 0) return status;

  _ZYMDB_PLDM_Firmware* const row = uefi_row({list.Firmwares, list.Count});
  if (row != nullptr) std::memcpy(row->VersionString, component.VersionString, sizeof row->VersionString);
  return zymdb_insert_or_update_pldm_firmware(kVendor, kDpuDevice, kVendor, kSubDevice, row);
}

int zymdb_get_dpu_uefi_version(unsigned int slotNo, char* buf, unsigned int size) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  // A missing buffer counts as a missing database.
  if (buf == nullptr || handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  const Statement<128> hardware(
      "select HardwareId from PCIs where Location=1 and SlotNo=%u and DeviceId=%u and HardwareId&0xFF=0;",
      slotNo, kDpuDevice);
  int status = ZYM_DB_STATUS_OK;
  const uint32_t hardware_id = select_number(handle, hardware, status);
  if (hardware_id == 0) return log_not_found(status, hardware);

  const Statement<128> version(
      "select VersionString from Firmwares where SoftwareID=\"15B3A2D4\" and HardwareId=%u;", hardware_id);
  Query query(handle, version);
  status = query.has_result() ? query.step() : query.status();
  if (status != ZYM_DB_STATUS_ROW) return log_not_found(status, version);
  return query.read_text(0, buf, bound_of(size));
}
