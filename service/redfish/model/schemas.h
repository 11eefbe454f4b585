// The published schemas that resources follow: one table, of which the types, the list of schemas, the
// metadata document and the links to descriptions are made.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_SCHEMAS_H
#define ZYMDB_SERVICE_REDFISH_MODEL_SCHEMAS_H

#include <span>
#include <string>
#include <string_view>

namespace zymdb::service::redfish {

struct Schema {
  std::string_view name;     // "ComputerSystem"
  std::string_view version;  // "v1_27_0"; empty of collections, which have none
  // Of what is described within resources, and is none itself.
  bool is_part = false;
};

// Of the DMTF's bundle 2025.4.
inline constexpr Schema kSchemas[] = {
    {"AccountService", "v1_18_1"},
    {"AttributeRegistry", "v1_4_0"},
    {"Bios", "v1_2_3"},
    {"Chassis", "v1_28_0"},
    {"ChassisCollection", ""},
    {"ComputerSystem", "v1_27_0"},
    {"ComputerSystemCollection", ""},
    {"Drive", "v1_22_0"},
    {"DriveCollection", ""},
    {"EthernetInterface", "v1_12_4"},
    {"EthernetInterfaceCollection", ""},
    {"Event", "v1_13_0"},
    {"EventDestination", "v1_16_0"},
    {"EventDestinationCollection", ""},
    {"EventService", "v1_12_0"},
    {"JsonSchemaFile", "v1_1_5"},
    {"JsonSchemaFileCollection", ""},
    {"Manager", "v1_24_0"},
    {"ManagerAccount", "v1_14_1"},
    {"ManagerAccountCollection", ""},
    {"ManagerCollection", ""},
    {"Memory", "v1_23_0"},
    {"MemoryCollection", ""},
    {"Message", "v1_3_0", true},
    {"MessageRegistryFile", "v1_1_5"},
    {"MessageRegistryFileCollection", ""},
    {"NetworkAdapter", "v1_14_0"},
    {"NetworkAdapterCollection", ""},
    {"NetworkDeviceFunction", "v1_11_1"},
    {"NetworkDeviceFunctionCollection", ""},
    {"NetworkInterface", "v1_2_3"},
    {"NetworkInterfaceCollection", ""},
    {"PCIeDevice", "v1_21_0"},
    {"PCIeDeviceCollection", ""},
    {"PCIeFunction", "v1_7_0"},
    {"PCIeFunctionCollection", ""},
    {"PCIeSlots", "v1_6_1"},
    {"Port", "v1_18_0"},
    {"PortCollection", ""},
    {"Processor", "v1_22_0"},
    {"ProcessorCollection", ""},
    {"Resource", "v1_23_0", true},
    {"Role", "v1_3_3"},
    {"RoleCollection", ""},
    {"ServiceRoot", "v1_20_0"},
    {"Session", "v1_8_0"},
    {"SessionCollection", ""},
    {"SessionService", "v1_2_0"},
    {"Settings", "v1_4_0", true},
    {"SoftwareInventory", "v1_13_0"},
    {"SoftwareInventoryCollection", ""},
    {"Storage", "v1_21_0"},
    {"StorageCollection", ""},
    {"StorageController", "v1_11_0"},
    {"StorageControllerCollection", ""},
    {"UpdateService", "v1_17_0"},
};

// A name that the table lacks does not compile.
consteval const Schema* schema(std::string_view name) {
  for (const Schema& each : kSchemas) {
    if (each.name == name) return &each;
  }
  throw "no such schema";
}

// "#ComputerSystem.v1_27_0.ComputerSystem".
std::string type_of(const Schema& schema);
// "ComputerSystem.v1_27_0", as the schema's file is called.
std::string versioned_name(const Schema& schema);
// Where it is published, as JSON Schema.
std::string publication_of(const Schema& schema);

// The metadata document: every schema, and the service's container.
std::string metadata();

}  // namespace zymdb::service::redfish

#endif
