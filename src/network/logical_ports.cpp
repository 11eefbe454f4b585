#include "db/code_text.h"
#include "db/query.h"
#include "db/rows.h"
#include "zymdb_network.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_LogicalPort;
using List = _ZYMDB_PCI_LogicalPort_List;

constexpr CodeText kLinkTechnologies[] = {
    {2, "Ethernet"},
    {3, "IB"},
    {4, "FC"},
};

constexpr CodeText kVnicModes[] = {
    {0, "Disabled"},
    {1, "Vot Virtual Fabric mode"},
    {2, "Switch Independent mode"},
    {3, "Unified Fabric Protocol Mode"},
};
constexpr uint8_t kUnknownVnicMode = 4;

// Interface-type numbers.
constexpr CodeText kProtocolTypes[] = {
    {6, "Ethernet"},
    {56, "Fibre Channel"},
    {199, "Infiniband"},
};

constexpr CodeText kConnectionTypes[] = {
    {2, "Fibre Channel"}, {3, "Parallel SCSI"}, {4, "SSA"}, {5, "IEEE1394"},
    {6, "RDMA"},          {7, "iSCSI"},         {8, "SAS"}, {9, "ADT"},
};

constexpr CodeText kRoles[] = {
    {2, "Initiator"},
    {3, "Target"},
    {4, "Both Initiator and Target"},
};

constexpr auto kPortColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, MaxDataSize),
    ZYMDB_FIELD(Record, PermanentAddress),
    ZYMDB_FIELD(Record, NetworkAddresses),
    ZYMDB_FIELD(Record, PhyIdx),
    ZYMDB_FIELD(Record, Idx),
    ZYMDB_NUMBER_IN_TEXT("LinkTechnology", Record, LinkTechnology, 0),
    ZYMDB_NUMBER_IN_TEXT("vNICMode", Record, vNICMode, kUnknownVnicMode),
    ZYMDB_FIELD(Record, MaxSpeed),
    ZYMDB_FIELD(Record, ProtocolType),
    ZYMDB_FIELD(Record, Ethernet),
    ZYMDB_FIELD(Record, FCoEFC),
    ZYMDB_FIELD(Record, iSCSI),
    ZYMDB_FIELD(Record, FCoEPermanentAddress),
    ZYMDB_FIELD(Record, FCoENetworkAddressess),
    ZYMDB_NUMBER_IN_TEXT("ConnectionType", Record, ConnectionType, 0),
    ZYMDB_NUMBER_IN_TEXT("Role", Record, Role, 0),
    ZYMDB_FIELD(Record, TargetRelativePortNumber),
});
constexpr int kPermanentAddress = kPortColumns.place_of("PermanentAddress");

constexpr int kShortestAddress = 12;
constexpr unsigned kAnyPhysicalPort = 255;

Filter<128> ports_of(const char* key_column, unsigned key, unsigned physical_port) {
  if (physical_port == kAnyPhysicalPort) return Filter<128>("%s=%d", key_column, static_cast<int>(key));
  return Filter<128>("%s=%d AND %s=%d", key_column, static_cast<int>(key), "PhyIdx",
                     static_cast<int>(physical_port));
}

bool has_permanent_address(Query& query) {
  int length = 0;
  return query.read_bytes(kPermanentAddress, length) == ZYM_DB_STATUS_OK && length >= kShortestAddress;
}

void read_port(Query& query, Record& port) {
  query.read_columns(kPortColumns, &port);
  copy_text(port.LinkTechnologyName, text_of(kLinkTechnologies, port.LinkTechnology));
  copy_text(port.vNICModeName, text_of(kVnicModes, port.vNICMode));
  copy_text(port.ProtocolTypeName, text_of(kProtocolTypes, port.ProtocolType, "Other"));
  copy_text(port.ConnectionTypeName, text_of(kConnectionTypes, port.ConnectionType));
  copy_text(port.RoleName, text_of(kRoles, port.Role));
}

int list_logical_ports(const char* key_column, unsigned key, unsigned physical_port, List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  Query query(handle, "PCILogicalPort", kPortColumns, ports_of(key_column, key, physical_port));
  if (!query.has_result()) return query.status();
  unsigned room = query.row_count();
  CallerArray<Record> ports = allocate_array<Record>(room);
  if (ports == nullptr) return ZYM_DB_STATUS_NO_MEMORY;

  uint32_t filled = 0;
  int status;
  while ((status = query.step()) == ZYM_DB_STATUS_ROW && filled < room) {
    if (has_permanent_address(query))
      read_port(query, ports[filled++]);
    else
      --room;
  }
  // No ports at all is told apart from an empty adapter list: by the code that ended the rows.
  if (filled == 0 || !ended_well(status)) return status;
  list->count = filled;
  list->ports = ports.release();
  return ZYM_DB_STATUS_OK;
}

}  // namespace

int zymdb_get_network_logical_port_list(unsigned int funKey, _ZYMDB_PCI_LogicalPort_List* list) {
  return list_logical_ports("PCIFuncKey", funKey, kAnyPhysicalPort, list);
}

int zymdb_get_network_logical_port_list2(unsigned int funKey, unsigned int phyIdx,
                                         _ZYMDB_PCI_LogicalPort_List* list) {
  return list_logical_ports("PCIFuncKey", funKey, phyIdx, list);
}

int zymdb_get_all_network_logical_port_list(unsigned int pciKey, _ZYMDB_PCI_LogicalPort_List* list) {
  return list_logical_ports("PCIKey", pciKey, kAnyPhysicalPort, list);
}
