#include "commands/settings.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  zymdb settings import adapters.json\n"
    "  zymdb settings list 4b:00.0 --prefix Boot\n"
    "  zymdb settings set BootProtocol.4b0000=PXE BootVlan.4b0000=40\n"
    "  zymdb settings pending";

}  // namespace

void add_settings(CommandTree& tree) {
  auto& settings = *tree.app.add_subcommand("settings", "Settings of the adapters: import, list and change");
  settings.footer(kFooter);
  settings.require_subcommand(1);
  add_settings_import(settings);
  add_settings_list(tree, settings);
  add_settings_set(settings);
  add_settings_pending(tree, settings);
}

}  // namespace zymdb::tool
