// Where resources are.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_PATHS_H
#define ZYMDB_SERVICE_REDFISH_MODEL_PATHS_H

#include <string>

namespace zymdb::service::redfish {

// Without the slash that the protocol writes behind it.
inline const std::string kRoot = "/redfish/v1";
inline const std::string kSystems = kRoot + "/Systems";
inline const std::string kSystem = kSystems + "/1";
inline const std::string kProcessors = kSystem + "/Processors";
inline const std::string kMemory = kSystem + "/Memory";
inline const std::string kStorage = kSystem + "/Storage";
inline const std::string kNetworkInterfaces = kSystem + "/NetworkInterfaces";
inline const std::string kEthernetInterfaces = kSystem + "/EthernetInterfaces";
inline const std::string kBios = kSystem + "/Bios";
inline const std::string kBiosSettings = kBios + "/Settings";
inline const std::string kAllChassis = kRoot + "/Chassis";
inline const std::string kChassis = kAllChassis + "/1";
inline const std::string kDevices = kChassis + "/PCIeDevices";
inline const std::string kSlots = kChassis + "/PCIeSlots";
inline const std::string kDrives = kChassis + "/Drives";
inline const std::string kNetworkAdapters = kChassis + "/NetworkAdapters";
inline const std::string kManagers = kRoot + "/Managers";
inline const std::string kManager = kManagers + "/1";
inline const std::string kUpdateService = kRoot + "/UpdateService";
inline const std::string kFirmwareInventory = kUpdateService + "/FirmwareInventory";
inline const std::string kSessionService = kRoot + "/SessionService";
inline const std::string kSessions = kSessionService + "/Sessions";
inline const std::string kAccountService = kRoot + "/AccountService";
inline const std::string kAccounts = kAccountService + "/Accounts";
inline const std::string kRoles = kAccountService + "/Roles";
inline const std::string kEventService = kRoot + "/EventService";
inline const std::string kSubscriptions = kEventService + "/Subscriptions";
inline const std::string kEventStream = kEventService + "/SSE";
inline const std::string kTestEvent = kEventService + "/Actions/EventService.SubmitTestEvent";
inline const std::string kRegistries = kRoot + "/Registries";
inline const std::string kJsonSchemas = kRoot + "/JsonSchemas";

// What the attributes of the settings are described by.
inline const std::string kAttributeRegistryId = "ZymdbBiosAttributeRegistry.1.0.0";
inline const std::string kAttributeRegistryFile = kRegistries + "/ZymdbBiosAttributeRegistry";
inline const std::string kAttributeRegistry = kAttributeRegistryFile + "/" + kAttributeRegistryId;

}  // namespace zymdb::service::redfish

#endif
