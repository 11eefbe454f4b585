#include "collect/write/inventory_owner.h"

#include <string>

#include "collect/write/stored_rows.h"
#include "common/client_objects.h"
#include "zymdb_db.h"

namespace zymdb::collect {
namespace {

constexpr const char* kTables[] = {
    "Processor",
    "Memory",
    "PCIs",
    "PCIAdapter",
    "PCIMisc",
    "VPDs",
    "NCSIPackageID",
    "PCIGPU",
    "PCIGPUChip",
    "PCINetwork",
    "PCILogicalPort",
    "PCIPhysicalPort",
    "PCIPhysicalPortStat",
    "PCIPhysicalPortCounter",
    "Firmwares",
    "PldmDeviceFirmware",
    "EmbeddedDeviceFirmware",
    "DPUEvents",
    "PCISetting",
    "AimDisks",
    "NVMeDrives",
    "SensorSlotMap",
    "System",
};

std::optional<SmbiosSystem> stored_system(_zym_db_handle_t* handle) {
  const auto content = system_rows({});
  const auto rows = read_stored_rows(handle, content);
  if (rows.empty()) return std::nullopt;
  const auto text = [&](const char* column) -> std::optional<std::string> {
    const auto* const stored = content.value_of(rows.front().values, column).as_text();
    return stored == nullptr || stored->empty() ? std::nullopt : std::optional(*stored);
  };
  SmbiosSystem system;
  system.manufacturer = text("Manufacturer");
  system.model = text("Model");
  system.serial_number = text("SerialNo");
  system.uuid = text("UUID");
  return system;
}

bool is_another(const SmbiosSystem& former, const SmbiosSystem& now) {
  if (former.uuid && now.uuid) return former.uuid != now.uuid;
  return former.serial_number && now.serial_number && former.serial_number != now.serial_number;
}

std::string name_of(const SmbiosSystem& system, bool by_uuid) {
  std::string name;
  for (const auto& part : {system.manufacturer, system.model}) {
    if (part) name += (name.empty() ? "" : " ") + *part;
  }
  if (name.empty()) name = "a machine";
  return by_uuid ? name + ", UUID " + *system.uuid : name + ", serial number " + *system.serial_number;
}

void empty(_zym_db_handle_t* handle) {
  for (const char* table : kTables) {
    const int status = delete_db_record(handle, table, nullptr, nullptr, 0);
    if (status != ZYM_DB_STATUS_OK) fail("cannot delete from table", table, status);
  }
}

}  // namespace

void make_room_for(const std::optional<System>& system, bool replace, _zym_db_handle_t* handle) {
  if (!system || !system->is_identified()) return;
  const auto former = stored_system(handle);
  if (!former || !is_another(*former, system->told)) return;
  if (replace) return empty(handle);
  const bool by_uuid = former->uuid && system->told.uuid;
  throw DatabaseError("the inventory is that of " + name_of(*former, by_uuid) + ", and this machine is " +
                      name_of(system->told, by_uuid) + ": --replace puts it in the other's place");
}

}  // namespace zymdb::collect
