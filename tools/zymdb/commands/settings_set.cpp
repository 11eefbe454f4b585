#include <algorithm>
#include <cstring>
#include <memory>

#include "commands/settings.h"
#include "common/client_extensions.h"
#include "controller/database_client.h"
#include "records/pci_settings.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/table.h"
#include "terminal/terminal.h"
#include "zymdb_pci_settings.h"

namespace zymdb::tool {
namespace {

using records::Attention;
using records::Field;
using records::value_of;

using Entry = ZYMDB_PCI_Config_Set;

constexpr char kAction[] = "save the settings";

constexpr char kFooter[] =
    "The values become pending and are handed to the BIOS configuration manager, which accepts or refuses\n"
    "each. Nothing is changed unless all of the settings exist. What the manager refuses stays pending.\n"
    "\n"
    "Examples:\n"
    "  zymdb settings set BootProtocol.4b0000=PXE\n"
    "  zymdb settings set BootProtocol.4b0000=PXE BootVlan.4b0000=40";

// The id as it stands in the entry, which cannot hold longer ones.
std::string id_of(const Entry& entry) {
  return entry.SettingID;
}

std::string result_text(const Entry& entry) {
  const uint32_t result = entry.Result;
  return result == 0 ? "accepted" : "refused (status " + std::to_string(result) + ")";
}

Attention result_attention(const Entry& entry) {
  return entry.Result == 0 ? Attention::kNone : Attention::kWarning;
}

constexpr Field<Entry> kFields[] = {
    ZYMDB_RECORD_FIELD(Entry, SettingID, "SETTING", ""),
    ZYMDB_RECORD_FIELD(Entry, PendingValue, "VALUE", ""),
    records::derived<Entry>("Outcome", "RESULT", "",
                            [](const Entry& each) { return value_of(result_text(each)); })
        .noted(result_attention),
};

// Statements hold these texts between single quotes.
template <size_t N>
void copy(char (&field)[N], const std::string& text, const std::string& assignment) {
  const auto refuse = [&](const std::string& reason) {
    throw CLI::ValidationError("ID=VALUE", "'" + assignment + "': " + reason);
  };
  if (text.size() >= N)
    refuse("ids and values of more than " + std::to_string(N - 1) + " bytes cannot be set");
  if (text.find('\'') != std::string::npos) refuse("ids and values with a quote cannot be set");
  std::memcpy(field, text.c_str(), text.size() + 1);
}

Entry parse(const std::string& assignment) {
  const auto equals = assignment.find('=');
  if (equals == std::string::npos || equals == 0)
    throw CLI::ValidationError("ID=VALUE", "'" + assignment + "' is not of that form");
  Entry entry{};
  copy(entry.SettingID, assignment.substr(0, equals), assignment);
  copy(entry.PendingValue, assignment.substr(equals + 1), assignment);
  return entry;
}

std::vector<Entry> parse_all(const std::vector<std::string>& assignments) {
  std::vector<Entry> entries;
  for (const auto& assignment : assignments) {
    const auto entry = parse(assignment);
    const bool is_known = std::any_of(entries.begin(), entries.end(),
                                      [&](const Entry& other) { return id_of(other) == id_of(entry); });
    if (is_known) throw CLI::ValidationError("ID=VALUE", "'" + id_of(entry) + "' is given twice");
    entries.push_back(entry);
  }
  return entries;
}

[[noreturn]] void fail_for_unknown(const std::vector<Entry>& entries) {
  for (const auto& entry : entries) {
    const auto address = "SettingID='" + id_of(entry) + "'";
    if (find_db_record(get_dmdb_handle(), "PCISetting", address.c_str()) == 0)
      throw Failure("no setting '" + id_of(entry) + "'; nothing was changed");
  }
  require_no_client_error(kAction);
  throw Failure(std::string("cannot ") + kAction + ": they changed meanwhile; try again");
}

void save(const std::vector<std::string>& assignments) {
  auto entries = parse_all(assignments);
  open_inventory(Opening::kChanging);
  // The BIOS configuration manager keeps what it accepts in the property database, and makes that at need.
  allow_creation(true);
  records::require_settled_settings();
  const int status = zymdb_save_pci_configSet_list(entries.data(), static_cast<unsigned>(entries.size()));
  if (status == ZYMDB_PCI_SETTING_ID_NOEXIT) fail_for_unknown(entries);
  const bool is_refused = status == ZYMDB_PCI_SETTING_BIOS_SET_FAIL;
  if (!is_refused) require_status(status, kAction);
  write_output(render_table(records::make_sheet<Entry>(kFields, entries), {.colors = want_colors("auto")}));
  if (is_refused) throw Failure("the BIOS configuration manager did not accept all values");
}

}  // namespace

void add_settings_set(CLI::App& settings) {
  auto& command = *settings.add_subcommand("set", "Give settings new values");
  command.footer(kFooter);
  const auto assignments = std::make_shared<std::vector<std::string>>();
  command.add_option("ID=VALUE", *assignments, "A setting and its new value")->required()->type_name("");
  command.callback([assignments] { save(*assignments); });
}

}  // namespace zymdb::tool
