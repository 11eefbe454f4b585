#include "collect/rows/system_rows.h"

#include "collect/rows/row_columns.h"

namespace zymdb::collect {
namespace {

template <auto Field>
constexpr Column<System> text_column(const char* name) {
  return {{name, Role::kValue, Kind::kText},
          [](const System& system) { return text_or_null(system.told.*Field); }};
}

constexpr Column<System> kColumns[] = {
    text_column<&SmbiosSystem::manufacturer>("Manufacturer"),
    text_column<&SmbiosSystem::model>("Model"),
    text_column<&SmbiosSystem::version>("Version"),
    text_column<&SmbiosSystem::serial_number>("SerialNo"),
    text_column<&SmbiosSystem::uuid>("UUID"),
    text_column<&SmbiosSystem::sku>("SKU"),
    text_column<&SmbiosSystem::family>("Family"),
    text_column<&SmbiosSystem::board_manufacturer>("BoardManufacturer"),
    text_column<&SmbiosSystem::board_model>("BoardModel"),
    text_column<&SmbiosSystem::board_version>("BoardVersion"),
    text_column<&SmbiosSystem::board_serial_number>("BoardSerialNo"),
    text_column<&SmbiosSystem::firmware_vendor>("FirmwareVendor"),
    text_column<&SmbiosSystem::firmware_version>("FirmwareVersion"),
    text_column<&SmbiosSystem::firmware_date>("FirmwareDate"),
    {{"HostName", Role::kKnown, Kind::kText},
     [](const System& system) { return text_or_null(system.host_name); }},
};

}  // namespace

TableContent system_rows(const std::optional<System>& system) {
  auto content = make_content("System", kColumns);
  if (!system) return content;
  add_row(content, kColumns, *system, true);
  content.is_partial = !system->is_whole;
  return content;
}

}  // namespace zymdb::collect
