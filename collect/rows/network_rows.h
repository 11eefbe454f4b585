// The rows of the inventory's tables that describe network ports.
#ifndef ZYMDB_COLLECT_ROWS_NETWORK_ROWS_H
#define ZYMDB_COLLECT_ROWS_NETWORK_ROWS_H

#include <set>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/port_view.h"
#include "collect/rows/table_content.h"
#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

// The network functions of `machine` (class "network", Fibre Channel and InfiniBand) and their ports, in the
// order of function and index. Ports of other functions are left out. A function without ports has no known
// number of them.
std::vector<TableContent> network_rows(const Machine& machine, const std::vector<NetworkPort>& ports,
                                       const PortContext& context);

// Where no source tells of ports: those of functions that are there stay as they are.
std::vector<TableContent> untold_network_rows(const Machine& machine,
                                              const std::set<FunctionKey>& foreign_functions);

bool is_network_function(const PciFunction& function);

}  // namespace zymdb::collect

#endif
