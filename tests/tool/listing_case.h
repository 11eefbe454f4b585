// What the tests know of the listings, beside what the tool says of them itself.
#ifndef ZYMDB_TESTS_TOOL_LISTING_CASE_H
#define ZYMDB_TESTS_TOOL_LISTING_CASE_H

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tool/run_tool.h"

namespace zymdb::test {

using Json = nlohmann::ordered_json;

struct ListingCase {
  std::string name;
  std::string header;  // the public header that declares the records; empty when none does
  std::vector<std::string> records;
  std::vector<std::string> derived;  // keys that no record has, in their order
};

inline std::ostream& operator<<(std::ostream& stream, const ListingCase& listing) {
  return stream << listing.name;
}

// Every listing with a record for each row of a table.
inline const ListingCase kListings[] = {
    {"system",
     "",
     {},
     {"HostName", "Manufacturer", "Model", "Version", "SerialNo", "UUID", "SKU", "Family",
      "BoardManufacturer", "BoardModel", "BoardVersion", "BoardSerialNo", "FirmwareVendor", "FirmwareVersion",
      "FirmwareDate", "CollectedAt", "Collected", "CollectedBy", "CollectedFrom"}},
    {"processors", "zymdb_cpu_mem.h", {"_ZYMDB_Processor"}, {"State", "VoltageText"}},
    {"memory",
     "zymdb_cpu_mem.h",
     {"_ZYMDB_Memory"},
     {"Size", "MemTypeName", "Locator", "Security", "Health"}},
    {"adapters", "zymdb_pci.h", {"_ZYMDB_PCI_Adapter"}, {"Place", "Address", "SerialNo", "PartNo"}},
    {"functions",
     "zymdb_pci.h",
     {"_ZYMDB_PCI_Generic"},
     {"Address", "Bridge", "Id", "SubsystemId", "Place", "Link", "LinkState", "Driver", "IOMMUGroup",
      "NUMANode", "ClassName", "Name", "VendorName", "DeviceName"}},
    {"vpd", "zymdb_pci.h", {"_ZYMDB_PCI_VPD"}, {"Function", "HardwareId", "HardwareTypeId"}},
    {"gpus",
     "zymdb_pci.h",
     {"_ZYMDB_GPU_Device", "_ZYMDB_GPU_Chip"},
     {"Function", "PCIFuncKey", "VideoMemory"}},
    {"cards", "zymdb_pci.h", {"_ZYMDB_HC_Card"}, {"Id", "SubsystemId"}},
    {"ports",
     "zymdb_network.h",
     {"_ZYMDB_PCI_PhysicalPort"},
     {"Function", "PCIFuncKey", "InterfaceName", "Link", "LinkSpeedText"}},
    {"logical-ports",
     "zymdb_network.h",
     {"_ZYMDB_PCI_LogicalPort"},
     {"Function", "PCIFuncKey", "MaxSpeedText"}},
    {"drives", "zymdb_storage.h", {"_ZYMDB_AimDisk"}, {"Function"}},
    {"firmware", "zymdb_firmware.h", {"_ZYMDB_PCI_Firmware"}, {"Function", "PCIFuncKey"}},
    {"pldm", "zymdb_firmware.h", {"_ZYMDB_PLDM_Firmware"}, {"Place", "Update"}},
    {"embedded", "zymdb_firmware.h", {"_ZYMDB_Embedded_Firmware"}, {"VersionString"}},
    {"settings", "zymdb_pci_settings.h", {"ZYMDB_PCI_Config_Setting"}, {"Function"}},
};

const ListingCase& listing(const std::string& name);

// The fields of the records in the order of their declaration.
std::vector<std::string> declared_fields(const ListingCase& listing);

// All column headings, in the order of the table with all columns.
std::vector<std::string> headings(const Workplace& workplace, const ListingCase& listing);

// One column of the table, without its heading.
std::vector<std::string> column(const Workplace& workplace, const ListingCase& listing,
                                const std::string& name);

// The array that --json prints, after its frame has been checked.
Json records(const Workplace& workplace, const ListingCase& listing);

std::vector<std::string> keys_of(const Json& row);

// A value of JSON as the cell of a table shows it, apart from how numbers are written.
bool shows(const std::string& cell, const Json& value);

}  // namespace zymdb::test

#endif
