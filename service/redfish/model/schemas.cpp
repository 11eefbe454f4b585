#include "service/redfish/model/schemas.h"

namespace zymdb::service::redfish {
namespace {

constexpr char kPublished[] = "http://redfish.dmtf.org/schemas/v1/";

void add_reference(std::string& to, const std::string& file, const std::string& included) {
  to += "  <edmx:Reference Uri=\"" + (kPublished + file) + "\">\n" + included + "  </edmx:Reference>\n";
}

std::string include(const std::string& name, const std::string& alias = "") {
  return "    <edmx:Include Namespace=\"" + name + "\"" + (alias.empty() ? "" : " Alias=\"" + alias + "\"") +
         "/>\n";
}

}  // namespace

std::string versioned_name(const Schema& schema) {
  std::string name(schema.name);
  return schema.version.empty() ? name : name + "." + std::string(schema.version);
}

std::string type_of(const Schema& schema) {
  return "#" + versioned_name(schema) + "." + std::string(schema.name);
}

std::string publication_of(const Schema& schema) {
  return kPublished + versioned_name(schema) + ".json";
}

std::string metadata() {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<edmx:Edmx xmlns:edmx=\"http://docs.oasis-open.org/odata/ns/edmx\" Version=\"4.0\">\n";
  for (const Schema& schema : kSchemas) {
    const std::string name(schema.name);
    std::string included = include(name);
    if (!schema.version.empty()) included += include(versioned_name(schema));
    add_reference(text, name + "_v1.xml", included);
  }
  add_reference(text, "RedfishExtensions_v1.xml", include("RedfishExtensions.v1_0_0", "Redfish"));
  return text +
         "  <edmx:DataServices>\n"
         "    <Schema xmlns=\"http://docs.oasis-open.org/odata/ns/edm\" Namespace=\"Service\">\n"
         "      <EntityContainer Name=\"Service\" Extends=\"" +
         versioned_name(*schema("ServiceRoot")) +
         ".ServiceContainer\"/>\n"
         "    </Schema>\n"
         "  </edmx:DataServices>\n"
         "</edmx:Edmx>\n";
}

}  // namespace zymdb::service::redfish
