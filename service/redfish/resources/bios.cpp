#include "service/redfish/model/attributes.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

Json values_of(const Machine& machine, std::string_view key) {
  Json values = Json::object();
  for (const Setting& setting : machine.settings)
    values[setting.attribute] = attribute_value(setting.row, key);
  return values;
}

Json make_bios(const Machine& machine) {
  return {{"Name", "Settings of the adapters"},
          {"AttributeRegistry", kAttributeRegistryId},
          {"Attributes", values_of(machine, "CurrentValue")},
          {"@Redfish.Settings",
           {{"@odata.type", type_of(*schema("Settings"))},
            {"SettingsObject", link(kBiosSettings)},
            {"SupportedApplyTimes", Json::array({"OnReset"})}}}};
}

Json make_settings(const Machine& machine) {
  return {{"Name", "Settings that are to take effect with the next reset"},
          {"AttributeRegistry", kAttributeRegistryId},
          {"Attributes", values_of(machine, "PendingValue")}};
}

Json make_registry_file() {
  return {{"Name", "Registry of the adapters' settings"},
          {"Languages", Json::array({"en"})},
          {"Registry", kAttributeRegistryId},
          {"Location", Json::array({{{"Language", "en"}, {"Uri", kAttributeRegistry}}})}};
}

Json make_registry(const Machine& machine) {
  Json attributes = Json::array();
  for (const Setting& setting : machine.settings) attributes.push_back(attribute_entry(setting));
  return {{"Name", "Attribute registry of the adapters' settings"},
          {"Language", "en"},
          {"OwningEntity", "zymdb"},
          {"RegistryVersion", "1.0.0"},
          {"RegistryEntries", {{"Attributes", std::move(attributes)}}}};
}

}  // namespace

void add_bios(Tree& tree) {
  const Machine& machine = tree.machine();
  if (machine.settings.empty()) return;
  tree.add(kBios, schema("Bios"), [&machine] { return make_bios(machine); });
  tree.add(kBiosSettings, schema("Bios"), [&machine] { return make_settings(machine); });
  tree.add(kAttributeRegistryFile, schema("MessageRegistryFile"), make_registry_file);
  tree.add(kAttributeRegistry, schema("AttributeRegistry"), [&machine] { return make_registry(machine); });
  for (const Setting& setting : machine.settings) tree.add_origin(setting.row, kBios);
}

}  // namespace zymdb::service::redfish
