#include "show/ports.h"

#include <utility>

#include "show/functions.h"

namespace zymdb::tool {
namespace {

// A script's variable that is not set must not stand for all adapters.
std::string objection_to_adapter(const std::string& text) {
  return text.empty() ? "an empty name names no adapter" : "";
}

}  // namespace

void add_port_options(CLI::App& command, PortSelection& selection) {
  auto& function = add_function_option(command, selection.function, "Only of this function");
  command
      .add_option("--adapter", selection.adapter, "Only of this adapter: PCI key or place, as in \"slot 3\"")
      ->type_name("ADAPTER")
      ->check(CLI::Validator(objection_to_adapter, ""))
      ->excludes(&function);
}

records::PortChoice port_choice(std::shared_ptr<const PortSelection> selection) {
  return [selection = std::move(selection)] {
    records::PortOwner owner;
    owner.function = find_optional_function(selection->function);
    if (!selection->adapter.empty()) owner.device = find_adapter(selection->adapter);
    return owner;
  };
}

}  // namespace zymdb::tool
