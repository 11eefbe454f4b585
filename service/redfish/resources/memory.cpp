#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

// SMBIOS's bits of the type's details, and its form factor of small modules.
constexpr uint64_t kNonVolatile = 0x1000, kRegistered = 0x2000, kUnbuffered = 0x4000, kLoadReduced = 0x8000;
constexpr uint64_t kSmall = 0x0d;

const char* module_type(uint64_t details, uint64_t form) {
  if (form == kSmall) return "SO_DIMM";
  if ((details & kLoadReduced) != 0) return "LRDIMM";
  if ((details & kRegistered) != 0) return "RDIMM";
  return (details & kUnbuffered) != 0 ? "UDIMM" : nullptr;
}

Json make_module(const Row& row) {
  Json json{{"Name", first_text({row.text("Locator"), "Memory module"})},
            {"Status", status_of(row, row.is_warned({"Health"}))}};
  fill(json, row, mappings_of("Memory", "memory"));
  if (!row.text("Locator").empty()) json["Location"]["PartLocation"]["LocationType"] = "Slot";
  const auto details = row.number("TypeDetail");
  if (row.is_vacant() || !details) return json;
  if ((*details & kNonVolatile) == 0) json["MemoryType"] = "DRAM";
  if (const char* const type = module_type(*details, row.number("FormFactor").value_or(0)))
    json["BaseModuleType"] = type;
  return json;
}

}  // namespace

void add_memory(Tree& tree) {
  tree.add_collection(kMemory, schema("MemoryCollection"));
  for (const Part& module : tree.machine().memory) {
    const std::string path = kMemory + "/" + module.id;
    tree.add(path, schema("Memory"), [&module] { return make_module(module.row); });
    tree.add_origin(module.row, path);
  }
}

}  // namespace zymdb::service::redfish
