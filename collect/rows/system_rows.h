// The row that describes the machine as a whole.
#ifndef ZYMDB_COLLECT_ROWS_SYSTEM_ROWS_H
#define ZYMDB_COLLECT_ROWS_SYSTEM_ROWS_H

#include <optional>
#include <string>

#include "collect/rows/table_content.h"
#include "collect/sources/smbios/smbios_system.h"

namespace zymdb::collect {

// Whoever told of it may not have been allowed to tell all.
struct System {
  SmbiosSystem told;
  std::optional<std::string> host_name;
  bool is_whole = true;

  bool is_identified() const { return told.uuid || told.serial_number; }
};

// System: at most one row, whatever the machine.
TableContent system_rows(const std::optional<System>& system);

}  // namespace zymdb::collect

#endif
