#include "show/functions.h"

#include <algorithm>
#include <array>

#include "records/reading.h"
#include "records/text.h"
#include "terminal/failure.h"
#include "zymdb_pci.h"

namespace zymdb::tool {
namespace {

// A function may have settings though nobody has found it on the bus.
constexpr const char* kTables[][2] = {{"PCIs", "FunKey"}, {"PCISetting", "PfaKey"}};

bool is_known(FunctionKey function) {
  return std::ranges::any_of(kTables, [&](const auto& table) {
    const std::string where = std::string(table[1]) + "=" + std::to_string(function.value);
    return find_db_record(get_dmdb_handle(), table[0], where.c_str()) > 0;
  });
}

std::string objection(const std::string& text) {
  if (FunctionKey::parse(text)) return {};
  return "'" + text + "' is neither an address like 0000:3b:00.0 nor a key (decimal, or hexadecimal with 0x)";
}

}  // namespace

FunctionKey find_function(const std::string& text) {
  const FunctionKey function = FunctionKey::parse(text).value_or(FunctionKey());
  const records::Reading reading("functions");
  const bool found = is_known(function);
  reading.require_whole();
  if (!found) throw Failure("there is no function " + function.text() + " in the inventory");
  return function;
}

std::optional<FunctionKey> find_optional_function(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(find_function(text));
}

uint32_t find_adapter(const std::string& text) {
  const records::Reading reading("adapters");
  _ZYMDB_PCI_Adapter_List list{};
  const int status = zymdb_get_pci_adapter_list(&list);
  const auto adapters = records::take_array(list.adapters, list.count);
  reading.require(status);
  const auto key = parse_key(text);
  const auto found = std::ranges::find_if(adapters, [&](const _ZYMDB_PCI_Adapter& adapter) {
    return adapter.PCIKey == key ||
           (adapter.Location != 0 && records::place_text(adapter.Location, adapter.SlotNo) == text);
  });
  if (found == adapters.end()) throw Failure("there is no adapter '" + text + "' in the inventory");
  return found->PCIKey;
}

void add_pci_ids_option(CLI::App& command, std::string& path) {
  command.add_option("--pci-ids", path, "Names of PCI vendors, devices and classes")
      ->type_name(kFileType)
      ->capture_default_str();
}

void add_function_argument(CLI::App& command, std::string& function, const std::string& help) {
  command.add_option("FUNCTION", function, help)
      ->required()
      ->type_name("")
      ->check(CLI::Validator(objection, ""));
}

CLI::Option& add_function_option(CLI::App& command, std::string& function, const std::string& help) {
  return *command.add_option("--function", function, help + ": address or function key")
              ->type_name("FUNCTION")
              ->check(CLI::Validator(objection, ""));
}

}  // namespace zymdb::tool
