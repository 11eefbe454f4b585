#include <array>
#include <string_view>

#include "service/redfish/model/mapping.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"
#include "service/redfish/resources/resources.h"

namespace zymdb::service::redfish {
namespace {

struct Cache {
  const char* key;  // of its size in KiB
  const char* type;
};
constexpr Cache kCaches[] = {
    {"L1CacheInstalled", "L1Cache"}, {"L2CacheInstalled", "L2Cache"}, {"L3CacheInstalled", "L3Cache"}};

// The schema counts whole MiB.
void add_caches(Json& json, const Row& row) {
  for (const Cache& cache : kCaches) {
    const auto kibibytes = row.number(cache.key).value_or(0);
    if (kibibytes == 0 || kibibytes % 1024 != 0) continue;
    json["ProcessorMemory"].push_back(
        {{"IntegratedMemory", true}, {"MemoryType", cache.type}, {"CapacityMiB", kibibytes / 1024}});
  }
}

// What the class's "State" says, as the schema does.
const char* state_of(const Row& row) {
  const std::string state = row.text("State");
  if (row.is_vacant()) return "Absent";
  if (state.starts_with("disabled")) return "Disabled";
  return state == "idle" ? "StandbyOffline" : "Enabled";
}

Json make_processor(const Row& row) {
  Json json{{"Name", first_text({row.text("Socket"), "Processor"})}, {"Status", status(state_of(row))}};
  fill(json, row, mappings_of("Processor", "processors"));
  if (row.is_vacant()) return json;
  add_caches(json, row);
  const std::string socket = first_text({row.text("Socket")});
  if (!socket.empty()) {
    json["Location"]["PartLocation"]["LocationType"] = "Socket";
    json["Location"]["PartLocation"]["ServiceLabel"] = socket;
  }
  return json;
}

Json make_gpu(const FunctionPart& gpu) {
  Json json{{"Name", first_text({gpu.row.text("GPUChipName"), "GPU"})},
            {"ProcessorType", "GPU"},
            {"Status", status("Enabled")}};
  fill(json, gpu.row, mappings_of("Processor", "gpus"));
  if (gpu.device == nullptr) return json;
  json["Links"]["PCIeDevice"] = link(path_of(*gpu.device));
  add_links(json["Links"], "PCIeFunctions", {path_of(*gpu.device, *gpu.function)});
  return json;
}

}  // namespace

void add_processors(Tree& tree) {
  tree.add_collection(kProcessors, schema("ProcessorCollection"));
  for (const Part& processor : tree.machine().processors) {
    const std::string path = kProcessors + "/" + processor.id;
    tree.add(path, schema("Processor"), [&processor] { return make_processor(processor.row); });
    tree.add_origin(processor.row, path);
  }
  for (const FunctionPart& gpu : tree.machine().gpus) {
    tree.add(path_of_gpu(gpu), schema("Processor"), [&gpu] { return make_gpu(gpu); });
    tree.add_origin(gpu.row, path_of_gpu(gpu));
  }
}

}  // namespace zymdb::service::redfish
