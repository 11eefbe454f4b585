#include "controller/ruvo_log.h"
#include "db/query.h"
#include "db/values.h"
#include "zymdb_network.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_PortLinkState;

constexpr auto kStateColumns = columns_of<Record>({
    ZYMDB_OWN_COLUMN("Idx"),
    ZYMDB_FIELD(Record, LinkStatus),
    ZYMDB_FIELD(Record, LinkSpeed),
    ZYMDB_FIELD(Record, TxUtil),
    ZYMDB_FIELD(Record, RxUtil),
});
constexpr int kIdx = kStateColumns.place_of("Idx");
constexpr auto kWrittenColumns =
    written(in_order(kStateColumns, {"LinkStatus", "LinkSpeed", "TxUtil", "RxUtil"}), Puts::kWide);

constexpr int kOnlyPort = -1;

// A text's comparison with the number columns is the database's.
Filter<128> state_of(unsigned funkey, int port) {
  if (port == kOnlyPort) return Filter<128>(" PCIFuncKey='%u'", funkey);
  return Filter<128>(" PCIFuncKey='%u' AND  Idx='%d'", funkey, port);
}

// The log lines of the write have always borne an older name of the operation; log readers look for it.
void log_failed_write(const char* filter, const Record& state, int status) {
  ruvo_log::logErr(
      "zymdb_set_network_physical_port_state failed, filter: %s, value: %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x), "
      "ret: %d\n",
      filter, "LinkStatus", state.LinkStatus, "LinkSpeed", state.LinkSpeed, "TxUtil", state.TxUtil, "RxUtil",
      state.RxUtil, status);
}

}  // namespace

int zymdb_get_network_physical_port_link_state(unsigned int funKey, _ZYMDB_PCI_PortLinkState* state,
                                               int portIndex) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  const int function = static_cast<int>(funKey);
  Query query(handle, "PCIPhysicalPortStat", kStateColumns, Filter<128>("%s=%d", "PCIFuncKey", function));
  if (!query.has_result()) return query.status();
  const int ports = static_cast<int>(query.row_count());
  if (portIndex == kOnlyPort && ports != 1) {
    query.release();
    ruvo_log::logErr("Find %d physical ports, func_key = %d, port_index = %d\n", ports, function, portIndex);
    return ZYM_DB_STATUS_NOT_FOUND;
  }

  while (query.step() == ZYM_DB_STATUS_ROW) {
    int index = 0;
    if (query.read(kIdx, index) != ZYM_DB_STATUS_OK) continue;
    if (portIndex == kOnlyPort || index == portIndex) {
      query.read_columns(kStateColumns, state);
      state->Idx = static_cast<uint16_t>(index);
      return ZYM_DB_STATUS_OK;
    }
    ruvo_log::logErr("Find a physical port, func_key = %d, port_index = %d, no equals to %d\n", function,
                     index, portIndex);
  }
  return ZYM_DB_STATUS_NOT_FOUND;
}

int zymdb_set_network_physical_port_link_state(unsigned int funKey, const _ZYMDB_PCI_PortLinkState* state,
                                               int portIndex) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Record present{};
  if (const int status = zymdb_get_network_physical_port_link_state(funKey, &present, portIndex);
      status != ZYM_DB_STATUS_OK)
    return status;

  Values values(handle);
  if (!values) {
    ruvo_log::logErr("zymdb_set_network_physical_port_state, ZYM_DB_STATUS_NO_MEMORY");
    return ZYM_DB_STATUS_NO_MEMORY;
  }
  values.put_columns(kWrittenColumns, state);
  const Filter<128> filter = state_of(funKey, portIndex);
  const int status = values.update("PCIPhysicalPortStat", filter);
  if (status != ZYM_DB_STATUS_OK) log_failed_write(filter, *state, status);
  return status;
}
