// A function with all its columns, as each engine's own interface reads it.
#ifndef ZYMDB_BENCH_FUNCTION_ROW_H
#define ZYMDB_BENCH_FUNCTION_ROW_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "zymdb_pci.h"

namespace bench {

// A macro, because statements are literals.
#define ZYMDB_FUNCTION_COLUMNS                                                                           \
  "_id,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,"            \
  "SubDeviceId,SlotNo,Location,SlotDesignation,SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort," \
  "NodeIndex,FunType,LanesInUse,MaxLanes,MaxPCIeType,PCIeType"

// Takes the width of the field that it is assigned to.
struct Number {
  int64_t value;
  template <class Field>
  operator Field() const {
    return static_cast<Field>(value);
  }
};

// Cut to the field, and ended.
template <size_t N>
void put_text(std::string_view text, char (&field)[N]) {
  const size_t length = std::min(text.size(), N - 1);
  if (length > 0) std::memcpy(field, text.data(), length);
  field[length] = '\0';
}

// `row` has number() and text().
template <class Row>
void read_function(Row& row, _ZYMDB_PCI_Generic& f) {
  f._id = row.number(), f.BridgeId = row.number(), f.SegNo = row.number(), f.BusNo = row.number();
  f.DeviceNo = row.number(), f.FunctionNo = row.number(), f.VendorId = row.number();
  f.DeviceId = row.number(), f.RevId = row.number(), f.ClsCode = row.number();
  f.SubVendorId = row.number(), f.SubDeviceId = row.number(), f.SlotNo = row.number();
  f.Location = row.number();
  row.text(f.SlotDesignation);
  f.SlotType = row.number(), f.SlotDataBusWidth = row.number(), f.Hotplug = row.number();
  f.PCIType = row.number(), f.BladeSlotPort = row.number(), f.NodeIndex = row.number();
  f.FunType = row.number(), f.LanesInUse = row.number(), f.MaxLanes = row.number();
  f.MaxPCIeType = row.number(), f.PCIeType = row.number();
}

}  // namespace bench

#endif
