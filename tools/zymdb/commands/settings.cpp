#include "commands/settings.h"

#include "files/parsing_marker.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "zymdb_pci_settings.h"

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

void require_settled_settings() {
  if (fileexist(kParsingMarker))
    throw Failure(std::string("the settings are being parsed right now (") + kParsingMarker +
                  " exists); try again");
}

void require_settings_status(int status, const std::string& action) {
  if (status == ZYMDB_PCI_SETTING_PARSING) require_settled_settings();
  if (status == ZYMDB_PCI_SETTING_PARSING || status == ZYMDB_PCI_SETTING_COUNT_MISMATCH)
    throw Failure("cannot " + action + ": they changed meanwhile; try again");
  require_status(status, action);
}

}  // namespace zymdb::tool
