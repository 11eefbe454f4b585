#include "collect/rows/network_rows.h"

#include <algorithm>
#include <string>

#include "collect/rows/port_state_rows.h"
#include "collect/rows/port_view.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr uint8_t kSubclassFibreChannel = 0x04;
constexpr uint8_t kSubclassInfiniBand = 0x06;

// Codes of the inventory.
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

template <auto Field>
Value port_text(const PortView& view) {
  return text_or_null(view.port.*Field);
}

Value technology(const PortView& view) {
  return code_text(view.port.technology);
}

Value max_speed(const PortView& view) {
  return view.port.max_speed ? Value::number(*view.port.max_speed * kBitsPerMegabit) : Value();
}

Value carries_ethernet(const PortView& view) {
  return Value::number(view.is(LinkTechnology::kEthernet));
}

Value carries_fibre_channel(const PortView& view) {
  return Value::number(view.port.current_fibre_address.has_value());
}

Value connection_type(const PortView& view) {
  if (view.port.current_fibre_address) return Value::text(kConnectedByFibreChannel);
  return view.is(LinkTechnology::kInfiniBand) ? Value::text(kConnectedByRdma) : Value();
}

// One logical port on each physical one, with the same index: what divides a port further is a function of
// its own.
constexpr Column<PortView> kLogicalColumns[] = {
    {{"PCIFuncKey", Role::kKey}, port_function},
    {{"Idx", Role::kKey}, port_index},
    {{"PCIKey", Role::kPlace}, [](const PortView& view) { return Value::number(view.function.device_key); }},
    {{"PhyIdx", Role::kValue}, port_index},
    {{"MaxDataSize", Role::kValue}, [](const PortView& view) { return number_or_null(view.port.mtu); }},
    {{"PermanentAddress", Role::kValue, Kind::kText}, port_text<&NetworkPort::permanent_address>},
    {{"NetworkAddresses", Role::kValue, Kind::kText}, port_text<&NetworkPort::current_address>},
    {{"LinkTechnology", Role::kValue, Kind::kText}, technology},
    {{"MaxSpeed", Role::kValue}, max_speed},
    {{"ProtocolType", Role::kValue},
     [](const PortView& view) { return Value::number(protocol_of(view.port.technology)); }},
    {{"Ethernet", Role::kValue}, carries_ethernet},
    {{"FCoEFC", Role::kValue}, carries_fibre_channel},
    {{"FCoEPermanentAddress", Role::kValue, Kind::kText}, port_text<&NetworkPort::permanent_fibre_address>},
    {{"FCoENetworkAddressess", Role::kValue, Kind::kText}, port_text<&NetworkPort::current_fibre_address>},
    {{"ConnectionType", Role::kValue, Kind::kText}, connection_type},
    {{"Role", Role::kValue, Kind::kText},
     [](const PortView& view) { return view.port.role ? code_text(*view.port.role) : Value(); }},
};

Value connector(const PortView& view) {
  return view.port.connector ? Value::text(hex_text(static_cast<uint16_t>(*view.port.connector))) : Value();
}

constexpr Column<PortView> kPhysicalColumns[] = {
    {{"PCIFuncKey", Role::kKey}, port_function},
    {{"Idx", Role::kKey}, port_index},
    {{"ConnectorLayout", Role::kValue, Kind::kText}, connector},
    {{"NumberofLogicalPorts", Role::kValue}, [](const PortView&) { return Value::number(1); }},
    {{"PermanentAddress", Role::kValue, Kind::kText}, port_text<&NetworkPort::permanent_address>},
    {{"InterfaceName", Role::kValue, Kind::kText}, port_text<&NetworkPort::interface>},
};

// ---- The tables

class NetworkTables {
 public:
  // Rows of functions whose ports others describe are theirs, whether or not the functions are there.
  explicit NetworkTables(const std::set<FunctionKey>& foreign_functions) {
    FunctionSet foreign;
    for (const FunctionKey function : foreign_functions) foreign.add(function);
    physical_.is_ordered = true;
    for (TableContent* content : all()) {
      content->function_column = "PCIFuncKey";
      content->is_foreign = [foreign](const TableContent& table, const std::vector<Value>& values) {
        return foreign.contains(table.value_of(values, "PCIFuncKey"));
      };
    }
  }

  void keep(const MachineFunction& function) {
    for (TableContent* content : all()) content->kept.add(function.key);
  }

  void add(const MachineFunction& function, const std::vector<const NetworkPort*>& ports,
           const PortContext& context) {
    const bool place_known = function.place_known;
    const auto count = static_cast<uint32_t>(ports.size());
    add_row(functions_, kFunctionColumns, {function, count != 0 ? std::optional(count) : std::nullopt},
            place_known);
    for (const NetworkPort* port : ports) {
      const PortView view{function, *port, context};
      add_row(logical_, kLogicalColumns, view, place_known);
      add_row(physical_, kPhysicalColumns, view, true);
      states_.add(view);
    }
  }

  void keep_samples(const PortContext& context) {
    states_.states.once_stored = [keep = context.keep, samples = states_.samples] { keep(samples); };
  }

  std::vector<TableContent> take() {
    std::vector<TableContent> tables;
    for (TableContent* content : all()) tables.push_back(std::move(*content));
    return tables;
  }

 private:
  std::vector<TableContent*> all() {
    return {&functions_, &logical_, &physical_, &states_.states, &states_.counters};
  }

  TableContent functions_ = make_content("PCINetwork", kFunctionColumns);
  TableContent logical_ = make_content("PCILogicalPort", kLogicalColumns);
  TableContent physical_ = make_content("PCIPhysicalPort", kPhysicalColumns);
  PortStateTables states_;
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

std::vector<TableContent> network_rows(const Machine& machine, const std::vector<NetworkPort>& ports,
                                       const PortContext& context) {
  NetworkTables tables(context.foreign_functions);
  for (const auto& function : *machine.functions) {
    const bool is_foreign = context.foreign_functions.contains(function.key);
    if (!is_foreign && is_network_function(function.pci))
      tables.add(function, ports_of(ports, function.pci.address), context);
  }
  tables.keep_samples(context);
  return tables.take();
}

std::vector<TableContent> untold_network_rows(const Machine& machine,
                                              const std::set<FunctionKey>& foreign_functions) {
  NetworkTables tables(foreign_functions);
  for (const auto& function : *machine.functions) tables.keep(function);
  auto contents = tables.take();
  for (auto& content : contents) content.is_told = false;
  return contents;
}

}  // namespace zymdb::collect
