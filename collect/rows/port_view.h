// A network port as the rows of several tables are made from it.
#ifndef ZYMDB_COLLECT_ROWS_PORT_VIEW_H
#define ZYMDB_COLLECT_ROWS_PORT_VIEW_H

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <utility>

#include "collect/model/machine.h"
#include "collect/rows/row_columns.h"
#include "collect/sources/sysfs/network_port.h"

namespace zymdb::collect {

// A port's counters at one moment.
struct CounterSample {
  PortCounters counters;  // both are known
  int64_t taken_at = 0;   // ms since 1970
};

// By function and port index.
using CounterSamples = std::map<std::pair<FunctionKey, unsigned>, CounterSample>;

// What is known about ports beside the ports themselves.
struct PortContext {
  int64_t now = 0;                          // ms since 1970
  CounterSamples samples;                   // the former run's
  std::set<FunctionKey> foreign_functions;  // whose ports others describe: their rows stay as they are
  // Takes this run's samples, once its rows are stored.
  std::function<void(const CounterSamples&)> keep;
};

struct PortView {
  const MachineFunction& function;
  const NetworkPort& port;
  const PortContext& context;

  bool is(LinkTechnology technology) const { return port.technology == technology; }
};

inline Value port_function(const PortView& view) {
  return Value::number(view.function.key);
}
inline Value port_index(const PortView& view) {
  return Value::number(view.port.index);
}

}  // namespace zymdb::collect

#endif
