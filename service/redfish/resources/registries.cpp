#include "service/redfish/model/messages.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

struct Registry {
  const char* name;
  const char* id;
  const char* description;
};
constexpr Registry kPublished[] = {
    {"Base", kBaseRegistry, "Base message registry"},
    {"ResourceEvent", kEventRegistry, "Resource event message registry"},
};

Json make_registry_file(const Registry& registry) {
  const std::string id = registry.id;
  return {{"Name", registry.description},
          {"Languages", Json::array({"en"})},
          {"Registry", id.substr(0, id.rfind('.'))},
          {"Location",
           Json::array({{{"Language", "en"},
                         {"PublicationUri", "http://redfish.dmtf.org/registries/" + id + ".json"}}})}};
}

Json make_schema_file(const Schema& schema) {
  return {{"Name", std::string(schema.name) + " schema"},
          {"Languages", Json::array({"en"})},
          {"Schema", type_of(schema)},
          {"Location", Json::array({{{"Language", "en"}, {"PublicationUri", publication_of(schema)}}})}};
}

}  // namespace

void add_registries(Tree& tree) {
  tree.add_collection(kRegistries, schema("MessageRegistryFileCollection"));
  for (const Registry& registry : kPublished)
    tree.add(kRegistries + "/" + registry.name, schema("MessageRegistryFile"),
             [&registry] { return make_registry_file(registry); });
  tree.add_collection(kJsonSchemas, schema("JsonSchemaFileCollection"));
  for (const Schema& each : kSchemas)
    tree.add(kJsonSchemas + "/" + versioned_name(each), schema("JsonSchemaFile"),
             [&each] { return make_schema_file(each); });
}

}  // namespace zymdb::service::redfish
