#include "collect/rows/network_rows.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "collect/rows/row_columns.h"
#include "common/text.h"
#include "zymdb_network.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kSubclassFibreChannel = 0x04;
constexpr uint8_t kSubclassInfiniBand = 0x06;

// Codes of the inventory.
constexpr uint32_t kLinkUp = 1;
constexpr uint32_t kLinkDown = 2;
constexpr char kConnectedByFibreChannel[] = "2";
constexpr char kConnectedByRdma[] = "6";

constexpr uint64_t kBitsPerMegabit = 1'000'000;

// Interface-type numbers.
uint32_t protocol_of(LinkTechnology technology) {
  switch (technology) {
    case LinkTechnology::kInfiniBand:
      return 199;
    case LinkTechnology::kFibreChannel:
      return 56;
    case LinkTechnology::kEthernet:
      break;
  }
  return 6;
}

template <class Code>
Value code_text(Code code) {
  return Value::text(std::to_string(static_cast<unsigned>(code)));
}

// ---- Functions

struct NetworkFunction {
  const MachineFunction& function;
  std::optional<uint32_t> ports;
};

constexpr Column<NetworkFunction> kFunctionColumns[] = {
    {{"PCIFuncKey", Role::kKey}, [](const auto& view) { return Value::number(view.function.key); }},
    {{"PCIKey", Role::kPlace}, [](const auto& view) { return Value::number(view.function.device_key); }},
    {{"NumberofPhysicalPorts", Role::kValue}, [](const auto& view) { return number_or_null(view.ports); }},
    {{"MaxNumberofLogicalPorts", Role::kValue}, [](const auto& view) { return number_or_null(view.ports); }},
};

// ---- Ports

struct View {
  const MachineFunction& function;
  const NetworkPort& port;
  const PortContext& context;

  bool is(LinkTechnology technology) const { return port.technology == technology; }
};

Value function_key(const View& view) {
  return Value::number(view.function.key);
}
Value index(const View& view) {
  return Value::number(view.port.index);
}

template <auto Field>
Value port_text(const View& view) {
  return text_or_null(view.port.*Field);
}

Value technology(const View& view) {
  return code_text(view.port.technology);
}

Value max_speed(const View& view) {
  return view.port.max_speed ? wide_number(*view.port.max_speed * kBitsPerMegabit) : Value();
}

Value carries_ethernet(const View& view) {
  return Value::number(view.is(LinkTechnology::kEthernet));
}

Value carries_fibre_channel(const View& view) {
  return Value::number(view.port.current_fibre_address.has_value());
}

Value connection_type(const View& view) {
  if (view.port.current_fibre_address) return Value::text(kConnectedByFibreChannel);
  return view.is(LinkTechnology::kInfiniBand) ? Value::text(kConnectedByRdma) : Value();
}

// One logical port on each physical one, with the same index: what divides a port further is a function of
// its own.
constexpr Column<View> kLogicalColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"Idx", Role::kKey}, index},
    {{"PCIKey", Role::kPlace}, [](const View& view) { return Value::number(view.function.device_key); }},
    {{"PhyIdx", Role::kValue}, index},
    {{"MaxDataSize", Role::kValue}, [](const View& view) { return number_or_null(view.port.mtu); }},
    {{"PermanentAddress", Role::kValue}, port_text<&NetworkPort::permanent_address>},
    {{"NetworkAddresses", Role::kValue}, port_text<&NetworkPort::current_address>},
    {{"LinkTechnology", Role::kValue}, technology},
    {{"MaxSpeed", Role::kValue}, max_speed},
    {{"ProtocolType", Role::kValue},
     [](const View& view) { return Value::number(protocol_of(view.port.technology)); }},
    {{"Ethernet", Role::kValue}, carries_ethernet},
    {{"FCoEFC", Role::kValue}, carries_fibre_channel},
    {{"FCoEPermanentAddress", Role::kValue}, port_text<&NetworkPort::permanent_fibre_address>},
    {{"FCoENetworkAddressess", Role::kValue}, port_text<&NetworkPort::current_fibre_address>},
    {{"ConnectionType", Role::kValue}, connection_type},
    {{"Role", Role::kValue},
     [](const View& view) { return view.port.role ? code_text(*view.port.role) : Value(); }},
};

Value connector(const View& view) {
  return view.port.connector ? Value::text(hex_text(static_cast<uint16_t>(*view.port.connector))) : Value();
}

constexpr Column<View> kPhysicalColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"Idx", Role::kKey}, index},
    {{"ConnectorLayout", Role::kValue}, connector},
    {{"NumberofLogicalPorts", Role::kValue}, [](const View&) { return Value::number(1); }},
    {{"PermanentAddress", Role::kValue}, port_text<&NetworkPort::permanent_address>},
};

// ---- Link states

Value link_status(const View& view) {
  if (!view.port.has_link) return Value::number(0);
  return Value::number(*view.port.has_link ? kLinkUp : kLinkDown);
}

uint32_t link_speed_of(const NetworkPort& port) {
  return port.has_link == true ? port.speed.value_or(0) : 0;
}

Value link_speed(const View& view) {
  return Value::number(link_speed_of(view.port));
}

template <auto Counter>
Value utilization_of(const View& view) {
  const auto before = view.context.samples.find({view.function.key, view.port.index});
  if (before == view.context.samples.end() || !view.port.counters) return Value::number(0);
  const uint64_t now = *view.port.counters.*Counter;
  const uint64_t then = before->second.counters.*Counter;
  const int64_t duration = view.context.now - before->second.taken_at;
  return Value::number(now < then ? 0 : utilization(now - then, duration, link_speed_of(view.port)));
}

constexpr Column<View> kStateColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"Idx", Role::kKey}, index},
    {{"LinkStatus", Role::kValue}, link_status},
    {{"LinkSpeed", Role::kValue}, link_speed},
    {{"TxUtil", Role::kValue}, utilization_of<&PortCounters::sent>},
    {{"RxUtil", Role::kValue}, utilization_of<&PortCounters::received>},
};

// A state that has changed is written as any reporter of link states writes it.
int write_state(const Row& row) {
  const auto number = [&](size_t column) {
    return static_cast<uint32_t>(std::stoul(*row.values[column].as_text()));
  };
  const _ZYMDB_PCI_PortLinkState state{number(2), number(3), number(4), number(5), 0};
  return zymdb_set_network_physical_port_link_state(number(0), &state, static_cast<int>(number(1)));
}

// ---- Counters

constexpr Column<View> kCounterColumns[] = {
    {{"PCIFuncKey", Role::kKey}, function_key},
    {{"Idx", Role::kKey}, index},
    {{"TxBytes", Role::kValue}, [](const View& view) { return wide_number(view.port.counters->sent); }},
    {{"RxBytes", Role::kValue}, [](const View& view) { return wide_number(view.port.counters->received); }},
    {{"SampledAt", Role::kStamp},
     [](const View& view) { return wide_number(static_cast<uint64_t>(view.context.now)); }},
};

// ---- The tables

struct NetworkTables {
  TableContent functions = make_content("PCINetwork", kFunctionColumns);
  TableContent logical = make_content("PCILogicalPort", kLogicalColumns);
  TableContent physical = make_content("PCIPhysicalPort", kPhysicalColumns);
  TableContent states = make_content("PCIPhysicalPortStat", kStateColumns);
  TableContent counters = make_content("PCIPhysicalPortCounter", kCounterColumns);

  NetworkTables() {
    states.change = write_state;
    physical.is_ordered = states.is_ordered = true;
  }

  std::vector<TableContent*> all() { return {&functions, &logical, &physical, &states, &counters}; }

  void keep(const MachineFunction& function) {
    for (TableContent* content : all()) content->kept_keys.insert(std::to_string(function.key));
  }

  void add(const MachineFunction& function, const std::vector<const NetworkPort*>& ports,
           const PortContext& context) {
    const bool place_known = function.place_known;
    const auto count = static_cast<uint32_t>(ports.size());
    add_row(functions, kFunctionColumns, {function, count != 0 ? std::optional(count) : std::nullopt},
            place_known);
    for (const NetworkPort* port : ports) {
      const View view{function, *port, context};
      add_row(logical, kLogicalColumns, view, place_known);
      add_row(physical, kPhysicalColumns, view, true);
      add_row(states, kStateColumns, view, true);
      if (port->counters) add_row(counters, kCounterColumns, view, true);
    }
  }

  std::vector<TableContent> take() {
    std::vector<TableContent> tables;
    for (TableContent* content : all()) tables.push_back(std::move(*content));
    return tables;
  }
};

std::vector<const NetworkPort*> ports_of(const std::vector<NetworkPort>& ports, const PciAddress& function) {
  std::vector<const NetworkPort*> own;
  for (const auto& port : ports) {
    if (port.function == function) own.push_back(&port);
  }
  std::ranges::sort(own, {}, &NetworkPort::index);
  return own;
}

}  // namespace

bool is_network_function(const PciFunction& function) {
  return function.base_class() == kClassNetwork ||
         (function.base_class() == kClassSerialBus &&
          (function.subclass() == kSubclassFibreChannel || function.subclass() == kSubclassInfiniBand));
}

uint32_t utilization(uint64_t bytes, int64_t duration, uint32_t speed) {
  if (duration <= 0 || speed == 0) return 0;
  const double carried = static_cast<double>(bytes) * 8;
  const double most = static_cast<double>(speed) * kBitsPerMegabit * static_cast<double>(duration) / 1000;
  return static_cast<uint32_t>(std::lround(std::min(carried / most, 1.0) * 100));
}

std::vector<TableContent> network_rows(const Machine& machine, const std::vector<NetworkPort>& ports,
                                       const PortContext& context) {
  NetworkTables tables;
  for (const auto& function : *machine.functions) {
    if (context.foreign_functions.contains(function.key)) {
      tables.keep(function);
    } else if (is_network_function(function.pci)) {
      tables.add(function, ports_of(ports, function.pci.address), context);
    }
  }
  return tables.take();
}

}  // namespace zymdb::collect
