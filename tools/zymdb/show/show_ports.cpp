#include <memory>

#include "commands/commands.h"
#include "show/pci_text.h"
#include "show/ports.h"

namespace zymdb::tool {
namespace {

constexpr char kPhysicalExamples[] =
    "  zymdb show ports\n"
    "  zymdb show ports --adapter \"slot 3\"\n"
    "  zymdb show ports --function 3b:00.0 --columns PORT,LINK,SPEED\n"
    "  zymdb show ports --json | jq '.ports[] | select(.LinkStatus == 2)'";

constexpr char kLogicalExamples[] =
    "  zymdb show logical-ports\n"
    "  zymdb show logical-ports --function 3b:00.0\n"
    "  zymdb show logical-ports --json | jq -r '.\"logical-ports\"[].PermanentAddress'";

template <class Record>
Value function_address(const Record& port) {
  return address_text(port.PCIFuncKey);
}

Value status(const PhysicalPort& port) {
  return link_status_text(port.LinkStatus);
}

Tone status_tone(const PhysicalPort& port) {
  return port.LinkStatus == 1 ? Tone::kPlain : Tone::kFaint;
}

Value speed(const PhysicalPort& port) {
  return link_speed_text(port.LinkSpeed);
}

Value max_speed(const LogicalPort& port) {
  return link_speed_text(port.MaxSpeed / 1'000'000);
}

constexpr Column<PhysicalPort> kPhysicalColumns[] = {
    derived<PhysicalPort>("FUNCTION", "address of the PCI function", Shown::kByDefault, function_address),
    field<PhysicalPort, &PhysicalPort::PCIFuncKey, 8>("PCIFuncKey", "KEY", "function key"),
    field<PhysicalPort, &PhysicalPort::Idx>("Idx", "PORT", "index of the port within its function",
                                            Shown::kByDefault),
    field<PhysicalPort, &PhysicalPort::ConnectorLayout, 4>("ConnectorLayout", "CONNECTORLAYOUT",
                                                           "connector code"),
    field<PhysicalPort, &PhysicalPort::ConnectorLayoutName>("ConnectorLayoutName", "CONNECTOR", "connector",
                                                            Shown::kByDefault),
    field<PhysicalPort, &PhysicalPort::NumberofLogicalPorts>("NumberofLogicalPorts", "LOGICAL",
                                                             "logical ports that it carries"),
    field<PhysicalPort, &PhysicalPort::PermanentAddress>("PermanentAddress", "ADDRESS", "burnt-in address",
                                                         Shown::kByDefault),
    derived<PhysicalPort>("LINK", "state of the link", Shown::kByDefault, status, status_tone),
    derived<PhysicalPort>("SPEED", "speed of the link", Shown::kByDefault, speed),
    field<PhysicalPort, &PhysicalPort::LinkStatus>("LinkStatus", "LINKSTATUS",
                                                   "state of the link: 1 up, 2 down; 0 when not known"),
    field<PhysicalPort, &PhysicalPort::LinkSpeed>("LinkSpeed", "LINKSPEED",
                                                  "speed of the link, Mbit/s; 0 when not known"),
    field<PhysicalPort, &PhysicalPort::TxUtil>(
        "TxUtil", "TX%", "share of the link in use for sending, percent", Shown::kByDefault),
    field<PhysicalPort, &PhysicalPort::RxUtil>(
        "RxUtil", "RX%", "share of the link in use for receiving, percent", Shown::kByDefault),
};

using Logical = LogicalPort;

constexpr Column<Logical> kLogicalColumns[] = {
    derived<Logical>("FUNCTION", "address of the PCI function", Shown::kByDefault, function_address),
    field<Logical, &Logical::PCIFuncKey, 8>("PCIFuncKey", "KEY", "function key"),
    field<Logical, &Logical::Idx>("Idx", "PORT", "index of the logical port", Shown::kByDefault),
    field<Logical, &Logical::PhyIdx>("PhyIdx", "PHYSICAL", "index of the physical port that carries it",
                                     Shown::kByDefault),
    field<Logical, &Logical::MaxDataSize>(
        "MaxDataSize", "MTU", "largest frame payload, bytes; 0 when not known", Shown::kByDefault),
    field<Logical, &Logical::PermanentAddress>("PermanentAddress", "ADDRESS", "burnt-in address",
                                               Shown::kByDefault),
    field<Logical, &Logical::NetworkAddresses>("NetworkAddresses", "CURRENT", "current address or addresses",
                                               Shown::kByDefault),
    field<Logical, &Logical::LinkTechnology>("LinkTechnology", "LINKTECHNOLOGY", "link technology code"),
    field<Logical, &Logical::LinkTechnologyName>("LinkTechnologyName", "TECHNOLOGY", "link technology",
                                                 Shown::kByDefault),
    field<Logical, &Logical::vNICMode>("vNICMode", "VNICMODE", "virtual NIC mode code; 4 when not known"),
    field<Logical, &Logical::vNICModeName>("vNICModeName", "VNIC", "virtual NIC mode"),
    derived<Logical>("TOPSPEED", "highest speed", Shown::kByDefault, max_speed),
    field<Logical, &Logical::MaxSpeed>("MaxSpeed", "BITRATE", "highest speed, bit/s; 0 when not known"),
    field<Logical, &Logical::ProtocolType>("ProtocolType", "PROTOCOLTYPE", "interface type number"),
    field<Logical, &Logical::ProtocolTypeName>("ProtocolTypeName", "PROTOCOL", "protocol"),
    field<Logical, &Logical::Ethernet>("Ethernet", "ETHERNET", "1: has an Ethernet function"),
    field<Logical, &Logical::FCoEFC>("FCoEFC", "FC", "1: has a Fibre Channel function"),
    field<Logical, &Logical::iSCSI>("iSCSI", "ISCSI", "1: has an iSCSI function"),
    field<Logical, &Logical::FCoEPermanentAddress>("FCoEPermanentAddress", "FCADDRESS",
                                                   "burnt-in Fibre Channel address"),
    field<Logical, &Logical::FCoENetworkAddressess>("FCoENetworkAddressess", "FCCURRENT",
                                                    "current Fibre Channel address"),
    field<Logical, &Logical::ConnectionType>("ConnectionType", "CONNECTIONTYPE", "storage connection code"),
    field<Logical, &Logical::ConnectionTypeName>("ConnectionTypeName", "CONNECTION", "storage connection"),
    field<Logical, &Logical::Role>("Role", "ROLECODE", "storage role code"),
    field<Logical, &Logical::RoleName>("RoleName", "ROLE", "storage role"),
    field<Logical, &Logical::TargetRelativePortNumber>("TargetRelativePortNumber", "TARGETPORT",
                                                       "number of the port among its target's"),
};

}  // namespace

Listing physical_port_listing(const std::shared_ptr<PortSelection>& selection) {
  return make_listing<PhysicalPort>("ports", "Network ports and their links", kPhysicalColumns,
                                    [selection] { return read_physical_ports(*selection); });
}

void add_show_ports(CommandTree& tree, CLI::App& show) {
  const auto physical = std::make_shared<PortSelection>();
  add_port_options(add_listing(tree, show, physical_port_listing(physical), kPhysicalExamples), *physical);
  const auto logical = std::make_shared<PortSelection>();
  auto& command = add_listing(
      tree, show,
      make_listing<LogicalPort>("logical-ports", "Logical ports of network functions", kLogicalColumns,
                                [logical] { return read_logical_ports(*logical); }),
      kLogicalExamples);
  add_port_options(command, *logical);
}

}  // namespace zymdb::tool
