#include "records/network.h"

#include <algorithm>
#include <map>
#include <string>
#include <type_traits>
#include <utility>

#include "records/pci.h"
#include "records/rows.h"
#include "records/text.h"

namespace zymdb::records {
namespace {

struct PhysicalPort : _ZYMDB_PCI_PhysicalPort {
  uint32_t PCIFuncKey = 0;
  std::string InterfaceName = {};
};
struct LogicalPort : _ZYMDB_PCI_LogicalPort {
  uint32_t PCIFuncKey = 0;
};
using State = _ZYMDB_PCI_PortLinkState;

template <class Port>
Value function_address(const Port& port) {
  return FunctionKey(port.PCIFuncKey).text();
}

template <class Port>
Value status(const Port& port) {
  return link_status_text(port.LinkStatus);
}

template <class Port>
Value speed(const Port& port) {
  return link_speed_text(port.LinkSpeed);
}

Attention link_attention(const Value& link) {
  return link == Value(link_status_text(ZYMDB_LINK_UP)) ? Attention::kNone : Attention::kAbsent;
}

Value max_speed(const LogicalPort& port) {
  constexpr uint64_t kMegabit = 1'000'000;
  return link_speed_text(port.MaxSpeed / kMegabit);
}

constexpr Field<PhysicalPort> kPhysicalFields[] = {
    derived<PhysicalPort>("Function", "FUNCTION", "address of the PCI function", function_address)
        .tells(Tells::kFunction)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(PhysicalPort, PCIFuncKey, "KEY", "function key").hex(8).place(),
    ZYMDB_RECORD_FIELD(PhysicalPort, Idx, "PORT", "index of the port within its function").shown().place(),
    ZYMDB_RECORD_FIELD(PhysicalPort, InterfaceName, "INTERFACE", "the system's name of the interface")
        .tells(Tells::kName)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(PhysicalPort, ConnectorLayout, "CONNECTORLAYOUT", "connector code")
        .hex(4)
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(PhysicalPort, ConnectorLayoutName, "CONNECTOR", "connector")
        .shown()
        .unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(PhysicalPort, NumberofLogicalPorts, "LOGICAL", "logical ports that it carries")
        .amount(),
    ZYMDB_RECORD_FIELD(PhysicalPort, PermanentAddress, "ADDRESS", "burnt-in address").shown().identity(),
    derived<PhysicalPort>("Link", "LINK", "state of the link", status).shown().judged(link_attention).state(),
    derived<PhysicalPort>("LinkSpeedText", "SPEED", "speed of the link", speed).shown().state(),
    ZYMDB_RECORD_FIELD(PhysicalPort, LinkStatus, "LINKSTATUS", "state of the link: 1 up, 2 down")
        .zero_is_unknown()
        .state(),
    ZYMDB_RECORD_FIELD(PhysicalPort, LinkSpeed, "LINKSPEED", "speed of the link")
        .unit("Mbit/s")
        .zero_is_unknown()
        .state(),
    ZYMDB_RECORD_FIELD(PhysicalPort, TxUtil, "TX%", "share of the link in use for sending")
        .unit("%")
        .shown()
        .changing(),
    ZYMDB_RECORD_FIELD(PhysicalPort, RxUtil, "RX%", "share of the link in use for receiving")
        .unit("%")
        .shown()
        .changing(),
};

constexpr Field<LogicalPort> kLogicalFields[] = {
    derived<LogicalPort>("Function", "FUNCTION", "address of the PCI function", function_address)
        .shown()
        .place(),
    ZYMDB_RECORD_FIELD(LogicalPort, PCIFuncKey, "KEY", "function key").hex(8).place(),
    ZYMDB_RECORD_FIELD(LogicalPort, Idx, "PORT", "index of the logical port").shown().place(),
    ZYMDB_RECORD_FIELD(LogicalPort, PhyIdx, "PHYSICAL", "index of the physical port that carries it").shown(),
    ZYMDB_RECORD_FIELD(LogicalPort, MaxDataSize, "MTU", "largest frame payload")
        .unit("bytes")
        .shown()
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, PermanentAddress, "ADDRESS", "burnt-in address").shown().identity(),
    ZYMDB_RECORD_FIELD(LogicalPort, NetworkAddresses, "CURRENT", "current address or addresses")
        .shown()
        .state(),
    ZYMDB_RECORD_FIELD(LogicalPort, LinkTechnology, "LINKTECHNOLOGY", "link technology code")
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, LinkTechnologyName, "TECHNOLOGY", "link technology")
        .shown()
        .unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(LogicalPort, vNICMode, "VNICMODE", "virtual NIC mode code").unknown_at(4),
    ZYMDB_RECORD_FIELD(LogicalPort, vNICModeName, "VNIC", "virtual NIC mode").unknown_at("Unknown"),
    derived<LogicalPort>("MaxSpeedText", "TOPSPEED", "highest speed", max_speed).shown(),
    ZYMDB_RECORD_FIELD(LogicalPort, MaxSpeed, "BITRATE", "highest speed").unit("bit/s").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, ProtocolType, "PROTOCOLTYPE", "interface type number").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, ProtocolTypeName, "PROTOCOL", "protocol").unknown_at("Other"),
    ZYMDB_RECORD_FIELD(LogicalPort, Ethernet, "ETHERNET", "1: has an Ethernet function"),
    ZYMDB_RECORD_FIELD(LogicalPort, FCoEFC, "FC", "1: has a Fibre Channel function"),
    ZYMDB_RECORD_FIELD(LogicalPort, iSCSI, "ISCSI", "1: has an iSCSI function"),
    ZYMDB_RECORD_FIELD(LogicalPort, FCoEPermanentAddress, "FCADDRESS", "burnt-in Fibre Channel address"),
    ZYMDB_RECORD_FIELD(LogicalPort, FCoENetworkAddressess, "FCCURRENT", "current Fibre Channel address"),
    ZYMDB_RECORD_FIELD(LogicalPort, ConnectionType, "CONNECTIONTYPE", "storage connection code")
        .zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, ConnectionTypeName, "CONNECTION", "storage connection")
        .unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(LogicalPort, Role, "ROLECODE", "storage role code").zero_is_unknown(),
    ZYMDB_RECORD_FIELD(LogicalPort, RoleName, "ROLE", "storage role").unknown_at("Unknown"),
    ZYMDB_RECORD_FIELD(LogicalPort, TargetRelativePortNumber, "TARGETPORT",
                       "number of the port among its target's")
        .zero_is_unknown(),
};

constexpr Field<State> kStateFields[] = {
    ZYMDB_RECORD_FIELD(State, Idx, "PORT", "index of the port within its function").place().shown(),
    derived<State>("Link", "LINK", "state of the link", status).shown(),
    derived<State>("LinkSpeedText", "SPEED", "speed of the link", speed).shown(),
    ZYMDB_RECORD_FIELD(State, LinkStatus, "LINKSTATUS", "state of the link: 1 up, 2 down")
        .zero_is_unknown()
        .state(),
    ZYMDB_RECORD_FIELD(State, LinkSpeed, "LINKSPEED", "speed of the link")
        .unit("Mbit/s")
        .zero_is_unknown()
        .state(),
    ZYMDB_RECORD_FIELD(State, TxUtil, "TX%", "share of the link in use for sending")
        .unit("%")
        .changing()
        .shown(),
    ZYMDB_RECORD_FIELD(State, RxUtil, "RX%", "share of the link in use for receiving")
        .unit("%")
        .changing()
        .shown(),
};

std::vector<FunctionKey> functions_of(const Reading& reading, const PortOwner& owner) {
  if (owner.function) return {*owner.function};
  std::vector<FunctionKey> keys;
  if (!owner.device) {
    for (const auto& function : list_functions(reading)) keys.push_back(FunctionKey::of(function));
    return keys;
  }
  _ZYMDB_PCI_Generic_List list{};
  const int status =
      zymdb_get_pci_generic_info_list(&list, ("DevKey=" + std::to_string(*owner.device)).c_str());
  for (const auto& function : take_array(list.items, list.count)) keys.push_back(FunctionKey::of(function));
  reading.require(status);
  std::ranges::sort(keys);
  return keys;
}

// Ports of one kind, function by function. `none` is what the library answers for a function without.
template <class Port, class List>
std::vector<Port> list_ports(const PortOwner& owner, int (*read)(unsigned, List*), int none) {
  const Reading reading("ports");
  std::vector<Port> ports;
  for (const FunctionKey function : functions_of(reading, owner)) {
    List list{};
    const int status = read(function.value, &list);
    const auto of_function = take_array(list.ports, list.count);
    if (status != none) reading.require(status);
    for (const auto& port : of_function) {
      auto& listed = ports.emplace_back();
      static_cast<std::remove_cvref_t<decltype(port)>&>(listed) = port;
      listed.PCIFuncKey = function.value;
    }
  }
  reading.require_whole();
  return ports;
}

std::vector<PhysicalPort> list_physical_ports(const PortOwner& owner) {
  auto ports = list_ports<PhysicalPort>(owner, zymdb_get_network_physical_port_list, ZYM_DB_STATUS_NOT_FOUND);
  const Reading reading("ports");
  Rows rows(reading, get_dmdb_handle(), "PCIPhysicalPort", {"PCIFuncKey", "Idx", "InterfaceName"});
  std::map<std::pair<uint32_t, uint32_t>, std::string> names;
  while (rows.step())
    names.try_emplace({rows.number("PCIFuncKey"), rows.number("Idx")}, rows.text("InterfaceName"));
  reading.require_whole();
  for (auto& port : ports) {
    const auto name = names.find({port.PCIFuncKey, port.Idx});
    if (name != names.end()) port.InterfaceName = name->second;
  }
  return ports;
}

}  // namespace

RecordType physical_ports(PortChoice whose) {
  return describe<PhysicalPort>("ports", "Network ports and their links", kPhysicalFields,
                                [whose = std::move(whose)] { return list_physical_ports(whose()); });
}

RecordType logical_ports(PortChoice whose) {
  return describe<LogicalPort>("logical-ports", "Logical ports of network functions", kLogicalFields,
                               [whose = std::move(whose)] {
                                 return list_ports<LogicalPort>(whose(), zymdb_get_network_logical_port_list,
                                                                ZYM_DB_STATUS_DONE);
                               })
      .as(Nature::kLogical);
}

RecordType link_states(std::function<std::vector<State>()> list) {
  return describe<State>("link", "The state of a network port's link", kStateFields, std::move(list));
}

}  // namespace zymdb::records
