#include <memory>

#include "records/firmware.h"
#include "show/listing.h"
#include "show/listings.h"

namespace zymdb::tool {
namespace {

constexpr char kExamples[] =
    "  zymdb show pldm\n"
    "  zymdb show pldm --pending\n"
    "  zymdb show pldm --failed --columns DEVICE,SLOT,ERROR";

struct PldmList {
  const char* option;
  const char* help;
  records::PldmReader read;
};
constexpr PldmList kLists[] = {
    {"--pending", "Only those with a pending update", zymdb_get_pldm_firmware_pending_list},
    {"--updated", "Only those to which an update was applied", zymdb_get_pldm_firmware_updated_list},
    {"--failed", "Only those whose update failed", zymdb_get_pldm_firmware_update_failure_list},
    {"--succeeded", "Only those whose update succeeded", zymdb_get_pldm_firmware_update_success_list},
};

}  // namespace

void add_show_pldm(CommandTree& tree, CLI::App& show) {
  const auto reader = std::make_shared<records::PldmReader>(zymdb_get_pldm_firmware_list);
  auto& command = add_listing(tree, show, {records::pldm_devices([reader] { return *reader; }), kExamples});
  std::vector<CLI::Option*> flags;
  for (const auto& [name, help, read] : kLists) {
    auto* flag = command.add_flag_callback(
        name, [reader, read = read] { *reader = read; }, help);
    for (auto* other : flags) flag->excludes(other);
    flags.push_back(flag);
  }
}

}  // namespace zymdb::tool
