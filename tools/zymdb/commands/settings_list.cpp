#include <charconv>
#include <memory>

#include "collect/sources/pci/pci_function.h"
#include "commands/settings.h"
#include "show/inventory.h"
#include "show/setting_fields.h"

namespace zymdb::tool {
namespace {

constexpr char kAction[] = "read the settings";

// The library's filter has room for no more.
constexpr size_t kLongestPrefix = 86;

constexpr char kExamples[] =
    "  zymdb settings list 4b:00.0\n"
    "  zymdb settings list 0x004b0000 --prefix Boot --columns SETTING,CURRENT,CHOICES\n"
    "  zymdb settings list 4b:00.0 --flagged --json | jq '.settings[].SettingID'";

struct Columns {
  Column<SettingRecord> all[std::size(kSettingFields)];
};

constexpr Columns columns_of_fields() {
  Columns columns{};
  for (size_t i = 0; i < std::size(kSettingFields); ++i) columns.all[i] = kSettingFields[i].column;
  return columns;
}

constexpr Columns kColumns = columns_of_fields();

struct Choice {
  std::string function;
  std::string prefix;
  bool flagged = false;

  const char* wanted_prefix() const { return prefix.empty() ? nullptr : prefix.c_str(); }
};

std::optional<uint32_t> number_of(std::string_view text) {
  const bool is_hex = text.starts_with("0x");
  if (is_hex) text.remove_prefix(2);
  uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), number, is_hex ? 16 : 10);
  return error == std::errc() && end == text.end() ? std::optional(number) : std::nullopt;
}

// A PCI address, or the key itself.
uint32_t function_key(const std::string& text) {
  if (const auto number = number_of(text)) return *number;
  const auto address = parse_pci_address(text);
  if (!address || address->domain > 0xff)
    throw CLI::ValidationError("FUNCTION", "'" + text + "' is neither a PCI address nor a function key");
  return address->domain << 24 | uint32_t{address->bus} << 16 | uint32_t{address->device} << 8 |
         address->function;
}

void check_prefix(const std::string& prefix) {
  if (prefix.find('\'') != std::string::npos)
    throw CLI::ValidationError("--prefix", "a quote cannot be asked for");
  if (prefix.size() > kLongestPrefix)
    throw CLI::ValidationError("--prefix", "longer than " + std::to_string(kLongestPrefix) + " bytes");
}

// The answer of one count and one list; settings may come and go between the two.
int read_once(uint32_t function, const Choice& choice, std::vector<SettingRecord>& settings) {
  unsigned short count = 0;
  settings.clear();
  int status = zymdb_get_pci_configSet_count(function, choice.wanted_prefix(), &count);
  if (status != ZYM_DB_STATUS_OK || count == 0) return status;
  settings.resize(count);
  status = zymdb_get_pci_configSet_list(function, choice.wanted_prefix(), count, settings.data(),
                                        choice.flagged, &count);
  settings.resize(count);
  return status;
}

std::vector<SettingRecord> read_settings(const Choice& choice) {
  constexpr int kTries = 5;
  const auto function = function_key(choice.function);
  check_prefix(choice.prefix);
  std::vector<SettingRecord> settings;
  int status = ZYMDB_PCI_SETTING_COUNT_MISMATCH;
  for (int tries = 0; tries < kTries && status == ZYMDB_PCI_SETTING_COUNT_MISMATCH; ++tries)
    status = read_once(function, choice, settings);
  require_settings_status(status, kAction);
  return settings;
}

}  // namespace

void add_settings_list(CommandTree& tree, CLI::App& settings) {
  const auto choice = std::make_shared<Choice>();
  auto listing = make_listing<SettingRecord>("settings", "The settings of a PCI function", kColumns.all,
                                             [choice] { return read_settings(*choice); });
  listing.command = "list";
  auto& command = add_listing(tree, settings, std::move(listing), kExamples);
  command
      .add_option("FUNCTION", choice->function,
                  "Address of the function (4b:00.0) or its key, the settings' PfaKey")
      ->required()
      ->type_name("");
  command.add_option("--prefix", choice->prefix, "Only settings whose id begins so; % and _ stand for any")
      ->type_name("TEXT");
  command.add_flag("--flagged", choice->flagged, "Only settings with bit 1 (value 2) of Flags");
}

}  // namespace zymdb::tool
