// The rows that say what network ports do: their links and counters.
#ifndef ZYMDB_COLLECT_ROWS_PORT_STATE_ROWS_H
#define ZYMDB_COLLECT_ROWS_PORT_STATE_ROWS_H

#include <cstdint>

#include "collect/rows/port_view.h"
#include "collect/rows/table_content.h"

namespace zymdb::collect {

// Percent of a link of `speed` Mbit/s that carries `bytes` in `duration` ms, rounded, 100 at most.
uint32_t utilization(uint64_t bytes, int64_t duration, uint32_t speed);

// PCIPhysicalPortStat, a row per port, and samples of the ports whose drivers count. PCIPhysicalPortCounter
// had them once: its rows go.
//
// Utilisation is what the counters counted since the former sample; without one, after a restart of the
// counters or without a link it is 0. A state that has changed is written by the library's operation.
struct PortStateTables {
  PortStateTables();
  void add(const PortView& view);

  TableContent states;
  TableContent counters;
  CounterSamples samples;
};

}  // namespace zymdb::collect

#endif
