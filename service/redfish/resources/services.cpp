#include "service/redfish/model/features.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/roles.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

Json make_root() {
  Json json{{"Id", "RootService"},
            {"Name", "Service root"},
            {"RedfishVersion", kRedfishVersion},
            {"Product", "zymdb"},
            {"ProtocolFeaturesSupported",
             {{"ExpandQuery",
               {{"ExpandAll", true},
                {"Levels", true},
                {"Links", true},
                {"MaxLevels", kMostLevels},
                {"NoLinks", true}}},
              {"FilterQuery", false},
              {"OnlyMemberQuery", true},
              {"SelectQuery", true},
              {"TopSkipQuery", true},
              {"ExcerptQuery", false},
              {"MultipleHTTPRequests", true},
              {"DeepOperations", {{"DeepPATCH", false}, {"DeepPOST", false}}}}}};
  json["Systems"] = link(kSystems);
  json["Chassis"] = link(kAllChassis);
  json["Managers"] = link(kManagers);
  json["UpdateService"] = link(kUpdateService);
  json["SessionService"] = link(kSessionService);
  json["AccountService"] = link(kAccountService);
  json["EventService"] = link(kEventService);
  json["Registries"] = link(kRegistries);
  json["JsonSchemas"] = link(kJsonSchemas);
  json["Links"] = {{"Sessions", link(kSessions)}, {"ManagerProvidingService", link(kManager)}};
  return json;
}

Json make_manager() {
  Json json{{"Name", "Inventory service"},
            {"ManagerType", "Service"},
            {"Model", "zymdb"},
            {"FirmwareVersion", ZYMDB_VERSION},
            {"Status", status("Enabled")}};
  add_links(json["Links"], "ManagerForServers", {kSystem});
  add_links(json["Links"], "ManagerForChassis", {kChassis});
  return json;
}

Json make_update_service() {
  return {{"Name", "Firmware inventory"},
          {"Status", status("Enabled")},
          // What is installed is listed; nothing is updated here.
          {"ServiceEnabled", false},
          {"FirmwareInventory", link(kFirmwareInventory)},
          // Clients in use ask for it, also where nothing is in it.
          {"Actions", Json::object()}};
}

Json make_account_service() {
  return {{"Name", "Accounts"},
          {"Status", status("Enabled")},
          {"ServiceEnabled", true},
          {"Accounts", link(kAccounts)},
          {"Roles", link(kRoles)}};
}

Json make_role(const RoleName& role) {
  Json privileges = Json::array();
  for (const char* const privilege : role.privileges) {
    if (privilege != nullptr) privileges.push_back(privilege);
  }
  return {{"Name", role.id},
          {"RoleId", role.id},
          {"IsPredefined", true},
          {"AssignedPrivileges", std::move(privileges)},
          {"OemPrivileges", Json::array()}};
}

Json make_event_service() {
  return {{"Name", "Events"},
          {"Status", status("Enabled")},
          {"ServiceEnabled", true},
          {"DeliveryRetryAttempts", kDeliveryTries},
          {"DeliveryRetryIntervalSeconds", kDeliveryPause.count()},
          {"EventFormatTypes", Json::array({"Event"})},
          {"ExcludeMessageId", false},
          {"ExcludeRegistryPrefix", false},
          {"SubordinateResourcesSupported", false},
          {"RegistryPrefixes", Json::array({"ResourceEvent"})},
          {"IncludeOriginOfConditionSupported", false},
          {"ServerSentEventUri", kEventStream},
          {"SSEFilterPropertiesSupported",
           {{"EventFormatType", false},
            {"MessageId", false},
            {"MetricReportDefinition", false},
            {"OriginResource", false},
            {"RegistryPrefix", false},
            {"ResourceType", false},
            {"SubordinateResources", false}}},
          {"Subscriptions", link(kSubscriptions)},
          {"Actions", {{"#EventService.SubmitTestEvent", {{"target", kTestEvent}}}}}};
}

}  // namespace

void add_services(Tree& tree) {
  tree.add(kRoot, schema("ServiceRoot"), make_root);
  tree.add_collection(kManagers, schema("ManagerCollection"));
  tree.add(kManager, schema("Manager"), make_manager);
  tree.add(kUpdateService, schema("UpdateService"), make_update_service);
  tree.add(kAccountService, schema("AccountService"), make_account_service);
  tree.add_collection(kRoles, schema("RoleCollection"));
  for (const RoleName& role : kRoleNames)
    tree.add(kRoles + "/" + role.id, schema("Role"), [&role] { return make_role(role); });
  tree.add(kEventService, schema("EventService"), make_event_service);
}

}  // namespace zymdb::service::redfish
