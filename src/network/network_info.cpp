#include "db/query.h"
#include "zymdb_network.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_Network_Info;

constexpr auto kInfoColumns = columns_of<Record>({
    ZYMDB_COLUMN("sum(NumberofPhysicalPorts)", Record, NumberofPhysicalPorts, 0),
    ZYMDB_COLUMN("sum(MaxNumberofLogicalPorts)", Record, MaxNumberofLogicalPorts, 0),
});

}  // namespace

int zymdb_get_network_info(unsigned int funKey, _ZYMDB_PCI_Network_Info* info) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (info == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCINetwork", kInfoColumns,
              Filter<128>("%s=%d", "PCIFuncKey", static_cast<int>(funKey)));
  if (!query.has_result()) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;
  query.read_columns(kInfoColumns, info);
  return ZYM_DB_STATUS_OK;
}
