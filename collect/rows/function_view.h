// A PCI function as the rows of several tables are made from it.
#ifndef ZYMDB_COLLECT_ROWS_FUNCTION_VIEW_H
#define ZYMDB_COLLECT_ROWS_FUNCTION_VIEW_H

#include <cstdint>

#include "collect/model/machine.h"
#include "collect/rows/row_columns.h"
#include "collect/sources/pci/pci_ids.h"

namespace zymdb::collect {

struct FunctionView {
  const MachineFunction& function;
  const Slot* slot;  // null on the board
  Location location;
  const PciIds& names;

  FunctionView(const Machine& machine, const MachineFunction& viewed, const PciIds& known_names)
      : function(viewed),
        slot(machine.slot_of(viewed)),
        location(machine.location_of(viewed)),
        names(known_names) {}

  const PciFunction& pci() const { return function.pci; }
};

inline Value function_key(const FunctionView& view) {
  return Value::number(view.function.key);
}

inline Value device_key(const FunctionView& view) {
  return Value::number(view.function.device_key);
}

inline Value segment(const FunctionView& view) {
  return Value::number(view.function.segment);
}

inline Value bus(const FunctionView& view) {
  return Value::number(view.pci().address.bus);
}

inline Value device(const FunctionView& view) {
  return Value::number(view.pci().address.device);
}

inline Value function_number(const FunctionView& view) {
  return Value::number(view.pci().address.function);
}

inline Value location(const FunctionView& view) {
  return Value::number(static_cast<uint32_t>(view.location));
}

// A device on the board has slot number 0.
inline Value slot_number(const FunctionView& view) {
  return Value::number(view.slot ? view.slot->number.value_or(0) : 0);
}

template <auto Field>
Value link_number(const FunctionView& view) {
  return number_or_null(view.pci().link.*Field);
}

}  // namespace zymdb::collect

#endif
