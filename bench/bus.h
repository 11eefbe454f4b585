// What the inventory daemon of the comparison offers on the message bus: each PCI function and each adapter
// is an object, each field of its record a property.
#ifndef ZYMDB_BENCH_BUS_H
#define ZYMDB_BENCH_BUS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "zymdb_pci.h"

namespace bench::bus {

constexpr char kName[] = "zymdb.Bench";
constexpr char kRoot[] = "/zymdb/adapters";
constexpr char kAdapter[] = "zymdb.Bench.Adapter";
constexpr char kFunction[] = "zymdb.Bench.Function";

inline std::string adapter_path(int adapter) {
  return std::string(kRoot) + "/" + std::to_string(adapter);
}
// Beside the adapters: a list of adapters does not carry their functions.
inline std::string function_path(int adapter) {
  return "/zymdb/functions/" + std::to_string(adapter);
}

// A property, by the type of its field: "s" for texts, "y", "q", "u" and "t" for numbers.
struct Property {
  const char* name;
  const char* type;
  size_t offset;
  size_t size;
};

template <class Field>
constexpr const char* type_of() {
  if (sizeof(Field) == sizeof(uint8_t)) return "y";
  if (sizeof(Field) == sizeof(uint16_t)) return "q";
  return sizeof(Field) == sizeof(uint32_t) ? "u" : "t";
}
template <>
constexpr const char* type_of<char[65]>() {
  return "s";
}
template <>
constexpr const char* type_of<char[129]>() {
  return "s";
}

#define ZYMDB_PROPERTY(RECORD, FIELD) \
  { #FIELD, type_of < decltype(RECORD::FIELD)>(), offsetof(RECORD, FIELD), sizeof(RECORD::FIELD) }

inline constexpr Property kAdapterProperties[] = {
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, PCIKey),       ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, NodeNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, SlotNo),       ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, ConnectorType),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, CardName),     ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, ConnectorTypeName),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, AIMSupported), ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, Location),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, HealthStatus), ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, NcsiIdValid),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, PackageID1),   ZYMDB_PROPERTY(_ZYMDB_PCI_Adapter, PackageID2),
};

inline constexpr Property kFunctionProperties[] = {
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, _id),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, BridgeId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SegNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, BusNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, DeviceNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, FunctionNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, VendorId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, DeviceId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, RevId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, ClsCode),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SubVendorId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SubDeviceId),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SlotNo),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, Location),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SlotDesignation),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SlotType),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, SlotDataBusWidth),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, Hotplug),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, PCIType),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, BladeSlotPort),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, NodeIndex),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, FunType),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, LanesInUse),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, MaxLanes),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, MaxPCIeType),
    ZYMDB_PROPERTY(_ZYMDB_PCI_Generic, PCIeType),
};

#undef ZYMDB_PROPERTY

}  // namespace bench::bus

#endif
