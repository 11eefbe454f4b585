#include "commands/settings.h"
#include "common/transaction.h"
#include "controller/database_client.h"
#include "files/parsing_marker.h"
#include "files/settings_file.h"
#include "show/inventory.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "FILE is a JSON array with one object per setting. Its keys are the fields that `settings list --json`\n"
    "prints; SettingID and PfaKey, the function key of the adapter, are required. Settings that are not in\n"
    "the file stay as they are. All of it is stored at once, or nothing when anything is wrong with it.\n"
    "\n"
    "While the settings are being stored, the marker file /tmp/dp.ucmparsing keeps readers away. It goes\n"
    "away with the command, also when that is interrupted; after a SIGKILL or a crash remove it by hand.\n"
    "\n"
    "Examples:\n"
    "  zymdb settings import adapters.json\n"
    "  zymdb settings list 4b:00.0 --json | jq .settings >kept.json";

void store(const std::vector<SettingRecord>& settings) {
  const ParsingMarker marker;
  repeat_overtaken([&] {
    Transaction transaction(get_dmdb_handle());
    for (const auto& setting : settings)
      require_status(extract_PCISetting_info(&setting),
                     "store the setting '" + std::string(setting.SettingID) + "'");
    transaction.commit();
  });
}

void import_file(const std::string& path) {
  const auto settings = read_settings_file(path);
  open_inventory(Opening::kCreating);
  store(settings);
  write_output(std::to_string(settings.size()) + " settings stored\n");
}

}  // namespace

void add_settings_import(CLI::App& settings) {
  auto& command = *settings.add_subcommand("import", "Store the settings of a file");
  command.footer(kFooter);
  const auto path = std::make_shared<std::string>();
  command.add_option("FILE", *path, "The settings, as JSON")->required()->type_name("");
  command.callback([path] { import_file(*path); });
}

}  // namespace zymdb::tool
