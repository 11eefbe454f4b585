#include <algorithm>
#include <cstdint>

#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

constexpr uint64_t kNonVolatile = 0x1000;

Json gibibytes(uint64_t mebibytes) {
  return mebibytes % 1024 == 0 ? Json(mebibytes / 1024) : Json(static_cast<double>(mebibytes) / 1024);
}

// Nothing where no module says so: a machine without memory runs no firmware that would tell of it.
void add_memory_summary(Json& json, const Machine& machine) {
  uint64_t memory = 0, persistent = 0;
  for (const Part& module : machine.memory) {
    const bool keeps = (module.row.number("TypeDetail").value_or(0) & kNonVolatile) != 0;
    if (!keeps) memory += module.row.number("MemSize").value_or(0);
    memory += module.row.number("MemCapacity").value_or(0) >> 20;
    persistent += module.row.number("AppDirCap").value_or(0) >> 20;
  }
  if (memory != 0) json["MemorySummary"]["TotalSystemMemoryGiB"] = gibibytes(memory);
  if (persistent != 0) json["MemorySummary"]["TotalSystemPersistentMemoryGiB"] = gibibytes(persistent);
}

void add_processor_summary(Json& json, const Machine& machine) {
  uint64_t count = 0, cores = 0, threads = 0;
  std::string model;
  for (const Part& processor : machine.processors) {
    if (processor.row.is_vacant()) continue;
    ++count;
    cores += processor.row.number("CoreCount").value_or(0);
    threads += processor.row.number("ThreadCount").value_or(0);
    if (model.empty()) model = processor.row.text("Version");
  }
  if (count == 0) return;
  json["ProcessorSummary"]["Count"] = count;
  if (cores != 0) json["ProcessorSummary"]["CoreCount"] = cores;
  if (threads != 0) json["ProcessorSummary"]["LogicalProcessorCount"] = threads;
  if (!model.empty()) json["ProcessorSummary"]["Model"] = first_text({model});
}

Json make_system(const Tree& tree) {
  const Machine& machine = tree.machine();
  Json json{{"Name", "System"}, {"SystemType", "Physical"}, {"Status", status("Enabled")}};
  if (machine.system) {
    json["Name"] = first_text({machine.system->text("Model"), "System"});
    fill(json, *machine.system, mappings_of("ComputerSystem", "system"));
  }
  add_processor_summary(json, machine);
  add_memory_summary(json, machine);
  json["Processors"] = link(kProcessors);
  json["Memory"] = link(kMemory);
  json["Storage"] = link(kStorage);
  json["NetworkInterfaces"] = link(kNetworkInterfaces);
  json["EthernetInterfaces"] = link(kEthernetInterfaces);
  if (!machine.settings.empty()) json["Bios"] = link(kBios);
  // Clients in use ask for both, also where nothing is in them.
  json["Boot"] = Json::object();
  json["Actions"] = Json::object();
  std::vector<std::string> devices;
  for (const Device& device : machine.devices) devices.push_back(path_of(device));
  add_links(json, "PCIeDevices", devices);
  add_links(json["Links"], "Chassis", {kChassis});
  add_links(json["Links"], "ManagedBy", {kManager});
  return json;
}

}  // namespace

void add_system(Tree& tree) {
  tree.add_collection(kSystems, schema("ComputerSystemCollection"));
  tree.add(kSystem, schema("ComputerSystem"), [&tree] { return make_system(tree); });
  if (tree.machine().system) tree.add_origin(*tree.machine().system, kSystem);
}

}  // namespace zymdb::service::redfish
