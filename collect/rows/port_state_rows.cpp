#include "collect/rows/port_state_rows.h"

#include <algorithm>
#include <cmath>

#include "zymdb_network.h"

namespace zymdb::collect {
namespace {

constexpr uint64_t kBitsPerMegabit = 1'000'000;

// ---- Link states

Value link_status(const PortView& view) {
  if (!view.port.has_link) return Value::number(ZYMDB_LINK_UNKNOWN);
  return Value::number(*view.port.has_link ? ZYMDB_LINK_UP : ZYMDB_LINK_DOWN);
}

uint32_t link_speed_of(const NetworkPort& port) {
  return port.has_link == true ? port.speed.value_or(0) : 0;
}

Value link_speed(const PortView& view) {
  return Value::number(link_speed_of(view.port));
}

template <auto Counter>
Value utilization_of(const PortView& view) {
  const auto before = view.context.samples.find({view.function.key, view.port.index});
  if (before == view.context.samples.end() || !view.port.counters) return Value::number(0);
  const uint64_t now = *view.port.counters.*Counter;
  const uint64_t then = before->second.counters.*Counter;
  const int64_t duration = view.context.now - before->second.taken_at;
  return Value::number(now < then ? 0 : utilization(now - then, duration, link_speed_of(view.port)));
}

constexpr Column<PortView> kStateColumns[] = {
    {{"PCIFuncKey", Role::kKey}, port_function},
    {{"Idx", Role::kKey}, port_index},
    {{"LinkStatus", Role::kValue}, link_status},
    {{"LinkSpeed", Role::kValue}, link_speed},
    {{"TxUtil", Role::kValue}, utilization_of<&PortCounters::sent>},
    {{"RxUtil", Role::kValue}, utilization_of<&PortCounters::received>},
};

// A state that has changed is written as any reporter of link states writes it.
int write_state(const TableContent& content, const Row& row) {
  const auto number = [&](const char* column) {
    return static_cast<uint32_t>(*content.value_of(row.values, column).as_number());
  };
  const _ZYMDB_PCI_PortLinkState state{number("LinkStatus"), number("LinkSpeed"), number("TxUtil"),
                                       number("RxUtil"), 0};
  return zymdb_set_network_physical_port_link_state(number("PCIFuncKey"), &state,
                                                    static_cast<int>(number("Idx")));
}

// ---- Counters

constexpr Column<PortView> kCounterColumns[] = {
    {{"PCIFuncKey", Role::kKey}, port_function},
    {{"Idx", Role::kKey}, port_index},
};

// Counters that stand still stay those of when they were last seen to move.
CounterSample sample_of(const PortView& view) {
  const CounterSample now{*view.port.counters, view.context.now};
  const auto before = view.context.samples.find({view.function.key, view.port.index});
  const bool stands_still = before != view.context.samples.end() &&
                            before->second.counters.sent == now.counters.sent &&
                            before->second.counters.received == now.counters.received;
  return stands_still ? before->second : now;
}

}  // namespace

uint32_t utilization(uint64_t bytes, int64_t duration, uint32_t speed) {
  if (duration <= 0 || speed == 0) return 0;
  const double carried = static_cast<double>(bytes) * 8;
  const double most = static_cast<double>(speed) * kBitsPerMegabit * static_cast<double>(duration) / 1000;
  return static_cast<uint32_t>(std::lround(std::min(carried / most, 1.0) * 100));
}

PortStateTables::PortStateTables()
    : states(make_content("PCIPhysicalPortStat", kStateColumns)),
      counters(make_content("PCIPhysicalPortCounter", kCounterColumns)) {
  states.change = write_state;
  states.is_ordered = true;
  counters.is_told = false;
}

void PortStateTables::add(const PortView& view) {
  add_row(states, kStateColumns, view, true);
  if (view.port.counters) samples[{view.function.key, view.port.index}] = sample_of(view);
}

}  // namespace zymdb::collect
