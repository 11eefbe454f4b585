// Network ports of a sysfs tree: Ethernet interfaces, InfiniBand devices and Fibre Channel hosts.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_NETWORK_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_SYSFS_NETWORK_H

#include <optional>
#include <string>
#include <vector>

#include "collect/sources/sysfs/ethtool.h"
#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

// The ports below `root`/class (net, infiniband, fc_host), by function and index. Nothing when `root` has no
// such folder.
//
// A port belongs to the PCI function that its folder lies in; what lies in none (bridges, VLANs, bonds) is
// not a port, nor are representors of virtual functions and virtual Fibre Channel ports. Its index is its
// `dev_port`; where a driver leaves that the same for all, the number in `phys_port_name`, else the next free
// one. An InfiniBand port has its number less 1 and takes address and frame size from its network interface.
// A Fibre Channel host on a function with an Ethernet port is a storage endpoint of that port.
//
// `ethtool` is asked about interfaces; it is empty for a tree that is not the running machine's. An interface
// that does not answer in time is silent; several are a NoAnswer.
std::optional<std::vector<NetworkPort>> read_sysfs_ports(const std::string& root,
                                                         const EthtoolReader& ethtool);

}  // namespace zymdb::collect

#endif
