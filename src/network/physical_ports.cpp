#include <algorithm>
#include <optional>
#include <span>

#include "db/code_text.h"
#include "db/query.h"
#include "db/rows.h"
#include "zymdb_network.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_PhysicalPort;
using List = _ZYMDB_PCI_PhysicalPort_List;

// 0x800B is left free.
constexpr CodeText kConnectorLayouts[] = {
    {1, "Reserved"},
    {2, "RS232"},
    {3, "BNC"},
    {4, "RJ11"},
    {5, "RJ45"},
    {6, "DB9"},
    {7, "Slot"},
    {8, "SCSI High Density"},
    {9, "SCSI Low Density"},
    {10, "Ribbon"},
    {11, "AUI"},
    {12, "Fiber SC"},
    {13, "Fiber ST"},
    {14, "FDDI-MIC"},
    {15, "Fiber-RTMJ"},
    {0x8000, "Corvex Mezzanine Connector"},
    {0x8001, "Corvex Mid-Mezzanine Connector"},
    {0x8002, "Tallis CFFh Connector"},
    {0x8003, "Tallis CIOv Connector"},
    {0x8004, "Onboard"},
    {0x8005, "SFP+"},
    {0x8006, "QSFP+"},
    {0x8007, "SFP28"},
    {0x8008, "QSFP28"},
    {0x8009, "QSFP56"},
    {0x800A, "SFP56"},
    {0x800C, "QSFP112"},
    {0x800D, "DSFP"},
};

constexpr auto kPortColumns = columns_of<Record>({
    ZYMDB_NUMBER_IN_TEXT("ConnectorLayout", Record, ConnectorLayout, 0),
    ZYMDB_FIELD(Record, Idx),
    ZYMDB_FIELD(Record, NumberofLogicalPorts),
    ZYMDB_FIELD(Record, PermanentAddress),
});

constexpr auto kStateColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, LinkStatus),
    ZYMDB_FIELD(Record, LinkSpeed),
    ZYMDB_FIELD(Record, TxUtil),
    ZYMDB_FIELD(Record, RxUtil),
});

constexpr unsigned kMostFunctions = 14;

// The functions whose ports are listed, and how many ports they have together.
struct Functions {
  uint32_t keys[kMostFunctions];
  unsigned count = 0;
  uint32_t ports = 0;
};

Functions read_functions(Query& query) {
  Functions functions;
  read_rows(query, functions.keys, kMostFunctions, functions.count, [&](uint32_t& key) {
    key = query.read_or(0, uint32_t{0});
    functions.ports += query.read_or(1, uint32_t{0});
    return true;
  });
  return functions;
}

// The listing under way. States are counted on their own: the n-th state belongs to the n-th port.
struct Listing {
  CallerArray<Record> ports;
  uint32_t room;
  uint32_t port_count = 0;
  uint32_t state_count = 0;
};

// The status that ends the whole listing; none while it goes on.
using End = std::optional<int>;

Filter<128> rows_of(uint32_t function) {
  return Filter<128>("%s=%d", "PCIFuncKey", static_cast<int>(function));
}

End read_ports(_zym_db_handle_t* handle, uint32_t function, Listing& listing) {
  Query query(handle, "PCIPhysicalPort", kPortColumns, rows_of(function));
  if (!query.has_result()) return query.status();
  const int status =
      read_rows(query, listing.ports.get(), listing.room, listing.port_count, [&](Record& port) {
        query.read_columns(kPortColumns, &port);
        copy_text(port.ConnectorLayoutName, text_of(kConnectorLayouts, port.ConnectorLayout));
        return true;
      });
  if (!ended_well(status)) return status;
  return std::nullopt;
}

End read_states(_zym_db_handle_t* handle, uint32_t function, Listing& listing) {
  Query query(handle, "PCIPhysicalPortStat", kStateColumns, rows_of(function));
  if (!query.has_result()) return query.status();
  // Whatever ends the states, those that were read count.
  read_rows(query, listing.ports.get(), listing.room, listing.state_count, [&](Record& port) {
    query.read_columns(kStateColumns, &port);
    return true;
  });
  return std::nullopt;
}

int list_physical_ports(const char* key_column, unsigned key, List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  Query query(handle, "PCINetwork", {"PCIFuncKey", "NumberofPhysicalPorts"},
              Filter<128>("%s=%d", key_column, static_cast<int>(key)));
  if (!query.has_result()) return query.status();
  const Functions functions = read_functions(query);
  query.release();
  if (functions.ports == 0) return ZYM_DB_STATUS_NOT_FOUND;
  Listing listing{allocate_zeroed_array<Record>(functions.ports), functions.ports};
  if (listing.ports == nullptr) return ZYM_DB_STATUS_NO_MEMORY;

  for (const uint32_t& function : std::span(functions.keys, functions.count)) {
    if (std::find(functions.keys, &function, function) != &function) continue;  // listed already
    if (const End status = read_ports(handle, function, listing)) return *status;
    if (const End status = read_states(handle, function, listing)) return *status;
  }
  list->count = listing.port_count;
  list->ports = listing.ports.release();
  return ZYM_DB_STATUS_OK;
}

}  // namespace

int zymdb_get_network_physical_port_list(unsigned int funKey, _ZYMDB_PCI_PhysicalPort_List* list) {
  return list_physical_ports("PCIFuncKey", funKey, list);
}

int zymdb_get_all_network_physical_port_list(unsigned int pciKey, _ZYMDB_PCI_PhysicalPort_List* list) {
  return list_physical_ports("PCIKey", pciKey, list);
}
