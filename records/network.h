// Network ports.
#ifndef ZYMDB_RECORDS_NETWORK_H
#define ZYMDB_RECORDS_NETWORK_H

#include <functional>
#include <optional>
#include <vector>

#include "common/pci_address.h"
#include "records/record.h"
#include "zymdb_network.h"

namespace zymdb::records {

// Whose ports are wanted: of all functions when nothing is set.
struct PortOwner {
  std::optional<FunctionKey> function;
  std::optional<uint32_t> device;  // PCI key
};

// Asked when the ports are listed.
using PortChoice = std::function<PortOwner()>;

RecordType physical_ports(PortChoice whose = [] { return PortOwner(); });
RecordType logical_ports(PortChoice whose = [] { return PortOwner(); });

// The state of one port's link.
RecordType link_states(std::function<std::vector<_ZYMDB_PCI_PortLinkState>()> list);

}  // namespace zymdb::records

#endif
