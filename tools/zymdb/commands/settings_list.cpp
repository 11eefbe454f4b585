#include <memory>

#include "commands/settings.h"
#include "records/pci_settings.h"
#include "show/functions.h"
#include "show/listing.h"

namespace zymdb::tool {
namespace {

// The library's filter has room for no more.
constexpr size_t kLongestPrefix = 86;

constexpr char kExamples[] =
    "  zymdb settings list 4b:00.0\n"
    "  zymdb settings list 0x004b0000 --prefix Boot --columns SETTING,CURRENT,CHOICES\n"
    "  zymdb settings list 4b:00.0 --flagged --json | jq '.settings[].SettingID'";

constexpr char kPendingExamples[] =
    "  zymdb settings pending\n"
    "  zymdb settings pending --json | jq -r '.pending[].SettingID'";

struct Choice {
  std::string function;
  std::string prefix;
  bool flagged = false;
};

std::string objection_to_prefix(const std::string& prefix) {
  if (prefix.find('\'') != std::string::npos) return "a quote cannot be asked for";
  if (prefix.size() > kLongestPrefix) return "longer than " + std::to_string(kLongestPrefix) + " bytes";
  return {};
}

}  // namespace

void add_settings_list(CommandTree& tree, CLI::App& settings) {
  const auto choice = std::make_shared<Choice>();
  auto type = records::settings([choice] {
    return records::SettingChoice{find_function(choice->function), choice->prefix, choice->flagged};
  });
  type.description = "The settings of a PCI function";
  auto& command = add_listing(tree, settings, {std::move(type), kExamples, "list"});
  add_function_argument(command, choice->function,
                        "Address of the function (4b:00.0) or its key, the settings' PfaKey");
  command.add_option("--prefix", choice->prefix, "Only settings whose id begins so; % and _ stand for any")
      ->type_name("TEXT")
      ->check(CLI::Validator(objection_to_prefix, ""));
  command.add_flag("--flagged", choice->flagged, "Only settings with bit 1 (value 2) of Flags");
}

void add_settings_pending(CommandTree& tree, CLI::App& settings) {
  add_listing(tree, settings, {records::pending_settings(), kPendingExamples});
}

}  // namespace zymdb::tool
