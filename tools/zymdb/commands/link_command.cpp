#include <charconv>
#include <climits>
#include <memory>

#include "commands/commands.h"
#include "records/network.h"
#include "show/functions.h"
#include "show/inventory.h"
#include "terminal/failure.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using State = _ZYMDB_PCI_PortLinkState;

constexpr char kFooter[] =
    "Without --set the state is printed, with it the named values are written and the others stay. The port\n"
    "must have a state already; `zymdb collect` makes one for every port.\n"
    "\n"
    "What --set takes:\n"
    "  status=up|down|unknown   whether there is a link; or a state code\n"
    "  speed=MBITS              speed of the link, Mbit/s\n"
    "  tx=PERCENT, rx=PERCENT   share of the link in use for sending and receiving\n"
    "\n"
    "Examples:\n"
    "  zymdb link 0000:3b:00.0\n"
    "  zymdb link 3b:00.0 --port 1 --set status=up speed=25000";

constexpr int kOnlyPort = -1;

struct LinkOptions {
  std::string function;
  int port = kOnlyPort;
  std::vector<std::string> changes;
};

struct Setting {
  const char* name;
  uint32_t State::*field;
};
constexpr Setting kSettings[] = {
    {"status", &State::LinkStatus},
    {"speed", &State::LinkSpeed},
    {"tx", &State::TxUtil},
    {"rx", &State::RxUtil},
};

constexpr const char* kStatusNames[] = {"unknown", "up", "down"};  // by code

uint32_t parse_value(const std::string& change, const std::string& name, const std::string& value) {
  for (uint32_t code = 0; code < std::size(kStatusNames); ++code)
    if (name == "status" && value == kStatusNames[code]) return code;
  uint32_t number = 0;
  const char* const end = value.data() + value.size();
  const auto parsed = std::from_chars(value.data(), end, number);
  if (value.empty() || parsed.ec != std::errc() || parsed.ptr != end)
    throw CLI::ValidationError("--set", "no value for it in '" + change + "'");
  return number;
}

void apply(const std::string& change, State& state) {
  const auto equals = change.find('=');
  const auto name = change.substr(0, equals);
  for (const auto& [known, field] : kSettings) {
    if (equals == std::string::npos || name != known) continue;
    state.*field = parse_value(change, name, change.substr(equals + 1));
    return;
  }
  throw CLI::ValidationError("--set", "'" + change + "' is none of status=…, speed=…, tx=…, rx=…");
}

// "port 1 of 0000:3b:00.0".
std::string port_text(FunctionKey function, int port) {
  const auto address = function.text();
  return port == kOnlyPort ? "the port of " + address : "port " + std::to_string(port) + " of " + address;
}

State read_state(FunctionKey function, int port) {
  State state{};
  const int status = zymdb_get_network_physical_port_link_state(function.value, &state, port);
  if (status == ZYM_DB_STATUS_NOT_FOUND)
    throw Failure("the inventory has no state of " + port_text(function, port) +
                  (port == kOnlyPort ? ", or of several (see --port)" : ""));
  require_status(status, "read the state of " + port_text(function, port));
  return state;
}

void run(const LinkOptions& options) {
  State named{};
  for (const auto& change : options.changes) apply(change, named);
  open_inventory(options.changes.empty() ? Opening::kReading : Opening::kChanging);
  const auto function = find_function(options.function);
  State state = read_state(function, options.port);
  if (options.changes.empty()) {
    const auto type = records::link_states([&] { return std::vector{state}; });
    write_output(render_table(type.list(records::default_fields(type)), {}));
    return;
  }
  for (const auto& change : options.changes) apply(change, state);
  require_status(zymdb_set_network_physical_port_link_state(function.value, &state, options.port),
                 "write the state of " + port_text(function, options.port));
}

}  // namespace

void add_link(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("link", "Print or write the state of a network port's link");
  command.footer(kFooter);
  const auto options = std::make_shared<LinkOptions>();
  add_function_argument(command, options->function, "The port's function: address or function key");
  command.add_option("--port", options->port, "Index of the port (default: the function's only one)")
      ->check(whole_number(0, INT_MAX))
      ->type_name("N");
  auto* set = command.add_option("--set", options->changes, "Write these values")->type_name("NAME=VALUE");
  tree.words[set] = {"status=up", "status=down", "status=unknown", "speed=", "tx=", "rx="};
  command.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
