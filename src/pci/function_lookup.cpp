#include "pci/function_lookup.h"

#include "db/query.h"

namespace zymdb {

int look_up_place(_zym_db_handle_t* handle, unsigned int funkey, FunctionPlace& place) {
  if (handle == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIs", {"HardwareTypeId", "Location"},
              Filter<128>("FunKey=%d", static_cast<int>(funkey)));
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (query.step() == ZYM_DB_STATUS_ROW) {
    place.hardware_type = static_cast<uint8_t>(query.read_or(0, uint32_t{ZYMDB_HARDWARE_PCI}));
    place.location = query.read_or(1, uint32_t{0});
  }
  return ZYM_DB_STATUS_OK;
}

}  // namespace zymdb
