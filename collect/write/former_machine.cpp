#include "collect/write/former_machine.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

#include "collect/write/stored_rows.h"
#include "zymdb_db.h"

namespace zymdb::collect {
namespace {

// As they are stored; nothing where they are not.
struct Ids {
  std::optional<uint32_t> vendor;
  std::optional<uint32_t> device;
  std::optional<uint32_t> subsystem_vendor;
  std::optional<uint32_t> subsystem_device;
};

std::optional<uint32_t> read_number(zym_db_result_t* row, int column) {
  int is_null = 0;
  uint32_t number = 0;
  if (zym_db_result_column_is_null(row, column, &is_null) != ZYM_DB_STATUS_OK || is_null != 0) return {};
  return zym_db_result_column_uint(row, column, &number) == ZYM_DB_STATUS_OK ? std::optional(number)
                                                                             : std::nullopt;
}

bool differ(std::optional<uint32_t> stored, std::optional<uint32_t> present) {
  return stored && present && *stored != *present;
}

bool is_other_device(const Ids& stored, const PciFunction& present) {
  return differ(stored.vendor, present.vendor) || differ(stored.device, present.device) ||
         differ(stored.subsystem_vendor, present.subsystem_vendor) ||
         differ(stored.subsystem_device, present.subsystem_device);
}

std::multimap<FunctionKey, Ids> read_ids(_zym_db_handle_t* handle) {
  std::multimap<FunctionKey, Ids> ids;
  for_each_row(
      handle, "PCIs", {"FunKey", "HardwareTypeId", "VendorId", "DeviceId", "SubVendorId", "SubDeviceId"},
      nullptr, [&ids](zym_db_result_t* row) {
        const auto key = read_number(row, 0);
        const auto type = read_number(row, 1).value_or(ZYMDB_HARDWARE_PCI);
        if (!key || type != ZYMDB_HARDWARE_PCI) return;
        ids.emplace(FunctionKey(*key),
                    Ids{read_number(row, 2), read_number(row, 3), read_number(row, 4), read_number(row, 5)});
      });
  return ids;
}

}  // namespace

FormerMachine read_former_machine(_zym_db_handle_t* handle, const Machine& machine) {
  FormerMachine former{handle, {}};
  if (!machine.functions) return former;
  const auto stored = read_ids(handle);
  for (const auto& function : *machine.functions) {
    const auto [first, last] = stored.equal_range(function.key);
    const bool is_other =
        std::all_of(first, last, [&](const auto& row) { return is_other_device(row.second, function.pci); });
    if (first != last && is_other) former.replaced.insert(function.key);
  }
  return former;
}

}  // namespace zymdb::collect
