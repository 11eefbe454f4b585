#include "service/redfish/model/mapping.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zymdb::service::redfish {
namespace {

constexpr Mapping kSystem[] = {
    {"HostName", "HostName"},
    {"Manufacturer", "Manufacturer"},
    {"Model", "Model"},
    {"SKU", "SKU"},
    {"SerialNo", "SerialNumber"},
    {"UUID", "UUID", as_uuid},
    {"FirmwareVersion", "BiosVersion"},
};

constexpr Mapping kChassis[] = {
    {"Manufacturer", "Manufacturer"}, {"Model", "Model"},        {"Version", "Version"}, {"SKU", "SKU"},
    {"SerialNo", "SerialNumber"},     {"UUID", "UUID", as_uuid},
};

constexpr Mapping kProcessor[] = {
    {"ProcType", "ProcessorType", processor_type},
    {"Family", "ProcessorArchitecture", processor_architecture},
    {"Socket", "Socket"},
    {"Manufacturer", "Manufacturer"},
    {"Version", "Model"},
    {"ProcId", "ProcessorId/IdentificationRegisters"},
    {"MaxSpeed", "MaxSpeedMHz", as_number},
    {"CurSpeed", "OperatingSpeedMHz", as_number},
    {"SerialNo", "SerialNumber"},
    {"PartNo", "PartNumber"},
    {"CoreCount", "TotalCores", as_number},
    {"CoreEnabled", "TotalEnabledCores", as_number},
    {"ThreadCount", "TotalThreads", as_number},
};

constexpr Mapping kGpu[] = {
    {"GPUChipManufacturer", "Manufacturer"},
    {"GPUChipName", "Model"},
    {"GPUChipModel", "Version"},
    {"GPUChipFamily", "Family"},
    {"GPUChipPartNumber", "PartNumber"},
    {"GPUChipSerialNumber", "SerialNumber"},
    {"GPUChipUniqueID", "UUID", as_uuid},
    {"GPUChipNumberOfEnabledCores", "TotalEnabledCores", as_number},
    {"VideoMemorySize", "MemorySummary/TotalMemorySizeMiB", number_of_digits},
};

constexpr Mapping kMemory[] = {
    {"MemSize", "CapacityMiB", as_positive},
    {"MemType", "MemoryDeviceType", memory_device_type},
    {"TotalWidth", "BusWidthBits", as_number},
    {"DataWidth", "DataWidthBits", as_number},
    {"MaxSpeed", "AllowedSpeedsMHz", as_count_of_one},
    {"ClockSpeed", "OperatingSpeedMhz", as_number},
    {"Attributes", "RankCount", memory_rank},
    {"Manufacturer", "Manufacturer"},
    {"SerialNo", "SerialNumber"},
    {"PartNo", "PartNumber"},
    {"Locator", "Location/PartLocation/ServiceLabel"},
    {"SlotNo", "Location/PartLocation/LocationOrdinalValue", as_number},
    {"CPUIndex", "MemoryLocation/Socket", as_number},
    {"iMCNum", "MemoryLocation/MemoryController", as_number},
    {"ChannelNum", "MemoryLocation/Channel", as_number},
    {"DimmNum", "MemoryLocation/Slot", as_number},
    {"MemCapacity", "VolatileSizeMiB", mebibytes_of_bytes},
    {"AppDirCap", "NonVolatileSizeMiB", mebibytes_of_bytes},
    {"FirmwareVersion", "FirmwareRevision"},
    {"Security", "SecurityState", security_state},
};

// Of whatever is in a card.
constexpr Mapping kCard[] = {
    {"CardName", "Model"},
    {"SerialNo", "SerialNumber"},
    {"PartNo", "PartNumber"},
};

// Whatever shows itself as functions is what the first of them is.
constexpr std::array kIdentity = {
    Mapping{"VendorName", "Manufacturer"},
    Mapping{"DeviceName", "Model"},
};

constexpr std::array kInterface = {
    Mapping{"LanesInUse", "PCIeInterface/LanesInUse", as_positive},
    Mapping{"MaxLanes", "PCIeInterface/MaxLanes", as_positive},
    Mapping{"PCIeType", "PCIeInterface/PCIeType", pcie_generation},
    Mapping{"MaxPCIeType", "PCIeInterface/MaxPCIeType", pcie_generation},
};

constexpr std::array kSlotOfDevice = {
    Mapping{"SlotType", "Slot/SlotType", slot_type},
    Mapping{"SlotType", "Slot/PCIeType", slot_generation},
    Mapping{"SlotDataBusWidth", "Slot/Lanes", slot_lanes},
    Mapping{"Hotplug", "Slot/HotPluggable", as_flag},
    Mapping{"SlotDesignation", "Slot/Location/PartLocation/ServiceLabel"},
};

template <size_t A, size_t B>
constexpr std::array<Mapping, A + B> joined(const std::array<Mapping, A>& first,
                                            const std::array<Mapping, B>& second) {
  std::array<Mapping, A + B> all;
  std::ranges::copy(second, std::ranges::copy(first, all.begin()).out);
  return all;
}

constexpr auto kController = joined(kIdentity, kInterface);
constexpr auto kDevice = joined(kController, kSlotOfDevice);

constexpr Mapping kFunction[] = {
    {"FunctionNo", "FunctionId", as_number},  {"ClsCode", "ClassCode", as_hex6},
    {"ClsCode", "DeviceClass", device_class}, {"VendorId", "VendorId", as_hex4},
    {"DeviceId", "DeviceId", as_hex4},        {"SubVendorId", "SubsystemVendorId", as_hex4},
    {"SubDeviceId", "SubsystemId", as_hex4},  {"RevId", "RevisionId", as_hex2},
    {"SegNo", "SegmentNumber", as_hex4},      {"BusNo", "BusNumber", as_hex2},
    {"DeviceNo", "DeviceNumber", as_hex2},    {"FunctionNo", "FunctionNumber", as_hex1},
};

constexpr Mapping kSlot[] = {
    {"SlotType", "SlotType", slot_type},
    {"SlotType", "PCIeType", slot_generation},
    {"SlotDataBusWidth", "Lanes", slot_lanes},
    {"Hotplug", "HotPluggable", as_flag},
    {"SlotDesignation", "Location/PartLocation/ServiceLabel"},
    {"SlotNo", "Location/PartLocation/LocationOrdinalValue", as_number},
};

constexpr Mapping kDrive[] = {
    {"Manufacture", "Manufacturer"},
    {"Model", "Model"},
    {"SerialNo", "SerialNumber"},
    {"PartNo", "PartNumber"},
    {"FruNo", "SparePartNumber"},
    {"FwVersion", "FirmwareVersion"},
    {"Capacity", "CapacityBytes", bytes_of_capacity},
    {"MediaType", "MediaType", media_type},
    {"MediaValue", "RotationSpeedRPM", as_number},
    {"DisplayType", "Protocol", drive_protocol},
    {"FormFactor", "DriveFormFactor", drive_form_factor},
    {"RemainLife", "PredictedMediaLifeLeftPercent", as_percent},
    {"Location", "PhysicalLocation/PartLocation/ServiceLabel"},
    {"BayNo", "PhysicalLocation/PartLocation/LocationOrdinalValue", as_number},
};

constexpr Mapping kPort[] = {
    {"InterfaceName", "PortId"},
    {"LinkStatus", "LinkStatus", link_status},
    {"LinkSpeed", "CurrentSpeedGbps", gbit_of_mbit},
    {"ConnectorLayoutName", "SFP/Type", transceiver},
};

constexpr Mapping kNetworkFunction[] = {
    {"LinkTechnologyName", "NetDevFuncType", link_technology},
};

constexpr Mapping kEthernetOfPort[] = {
    {"PermanentAddress", "PermanentMACAddress", as_mac_address},
    {"LinkStatus", "LinkStatus", link_status},
    {"LinkSpeed", "SpeedMbps", as_number},
};

constexpr Mapping kEthernetOfLogicalPort[] = {
    {"NetworkAddresses", "MACAddress", as_mac_address},
    {"MaxDataSize", "MTUSize", as_number},
};

constexpr Mapping kSoftwareOfFirmware[] = {
    {"FirmwareName", "Name"},        {"Description", "Description"},
    {"VersionString", "Version"},    {"ReleaseDate", "ReleaseDate", time_of_date},
    {"Manufacture", "Manufacturer"}, {"SoftwareID", "SoftwareId"},
};

constexpr Mapping kSoftwareOfPldm[] = {
    {"DeviceName", "Name"},
    {"VersionString", "Version"},
    {"ReleaseDate", "ReleaseDate", time_of_date},
    {"Manufacture", "Manufacturer"},
    {"SoftwareID", "SoftwareId"},
    {"UpdateSupport", "Updateable", as_flag},
};

constexpr Mapping kSoftwareOfEmbedded[] = {
    {"DeviceName", "Name"},
    {"VersionString", "Version"},
    {"SoftwareID", "SoftwareId"},
};

constexpr Mapping kSoftwareOfDrive[] = {
    {"Manufacture", "Manufacturer"},
    {"FwVersion", "Version"},
};

constexpr Mapping kSoftwareOfMemory[] = {
    {"Manufacturer", "Manufacturer"},
    {"FirmwareVersion", "Version"},
};

constexpr Mapping kAttribute[] = {
    {"ShortDesc", "DisplayName"},
    {"FullDesc", "HelpText"},
};

constexpr MappingTable kTables[] = {
    {"ComputerSystem", "system", kSystem},
    {"Chassis", "system", kChassis},
    {"Processor", "processors", kProcessor},
    {"Processor", "gpus", kGpu},
    {"Memory", "memory", kMemory},
    {"PCIeDevice", "functions", kDevice},
    {"PCIeDevice", "adapters", kCard},
    {"PCIeFunction", "functions", kFunction},
    {"PCIeSlots", "functions", kSlot},
    {"StorageController", "functions", kController},
    {"StorageController", "adapters", kCard},
    {"Drive", "drives", kDrive},
    {"NetworkAdapter", "functions", kIdentity},
    {"NetworkAdapter", "adapters", kCard},
    {"Port", "ports", kPort},
    {"NetworkDeviceFunction", "logical-ports", kNetworkFunction},
    {"EthernetInterface", "ports", kEthernetOfPort},
    {"EthernetInterface", "logical-ports", kEthernetOfLogicalPort},
    {"SoftwareInventory", "firmware", kSoftwareOfFirmware},
    {"SoftwareInventory", "pldm", kSoftwareOfPldm},
    {"SoftwareInventory", "embedded", kSoftwareOfEmbedded},
    {"SoftwareInventory", "drives", kSoftwareOfDrive},
    {"SoftwareInventory", "memory", kSoftwareOfMemory},
    {"AttributeRegistry", "settings", kAttribute},
};

}  // namespace

std::span<const MappingTable> mapping_tables() {
  return kTables;
}

std::span<const Mapping> mappings_of(std::string_view resource, std::string_view part_class) {
  for (const MappingTable& table : kTables) {
    if (table.resource == resource && table.part_class == part_class) return table.mappings;
  }
  return {};
}

void set(Json& resource, std::string_view property, Json value) {
  const size_t slash = property.find('/');
  Json& member = resource[std::string(property.substr(0, slash))];
  if (slash == std::string_view::npos)
    member = std::move(value);
  else
    set(member, property.substr(slash + 1), std::move(value));
}

void fill(Json& resource, const Row& row, std::span<const Mapping> mappings) {
  for (const Mapping& mapping : mappings) {
    Json value = mapping.convert(row.value(mapping.key));
    if (!value.is_null()) set(resource, mapping.property, std::move(value));
  }
}

}  // namespace zymdb::service::redfish
