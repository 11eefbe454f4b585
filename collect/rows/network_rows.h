// The rows of the inventory's tables that describe network ports.
#ifndef ZYMDB_COLLECT_ROWS_NETWORK_ROWS_H
#define ZYMDB_COLLECT_ROWS_NETWORK_ROWS_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "collect/model/machine.h"
#include "collect/rows/table_content.h"
#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

// A port's counters at one moment.
struct CounterSample {
  PortCounters counters;
  int64_t taken_at = 0;  // ms since 1970
};

// By function key and port index.
using CounterSamples = std::map<std::pair<uint32_t, unsigned>, CounterSample>;

// What is known about ports beside the ports themselves.
struct PortContext {
  int64_t now = 0;                       // ms since 1970
  CounterSamples samples;                // the former run's
  std::set<uint32_t> foreign_functions;  // whose ports others describe: their rows stay as they are
};

// Percent of a link of `speed` Mbit/s that carries `bytes` in `duration` ms, rounded, 100 at most.
uint32_t utilization(uint64_t bytes, int64_t duration, uint32_t speed);

// The network functions of `machine` (class "network", Fibre Channel and InfiniBand) and their ports, in the
// order of function and index. Ports of other functions are left out.
//
// A function without ports has no known number of them. Utilisation is what the counters counted since the
// former sample; without one, after a restart of the counters or without a link it is 0.
std::vector<TableContent> network_rows(const Machine& machine, const std::vector<NetworkPort>& ports,
                                       const PortContext& context);

bool is_network_function(const PciFunction& function);

}  // namespace zymdb::collect

#endif
