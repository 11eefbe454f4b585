#include <array>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>

#include "commands/commands.h"
#include "records/firmware.h"
#include "show/inventory.h"
#include "show/listing.h"
#include "terminal/failure.h"
#include "terminal/terminal.h"
#include "zymdb_firmware.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  zymdb dpu log 3\n"
    "  zymdb dpu append 3 --message 'boot completed' --generator UEFI\n"
    "  zymdb dpu clear 3\n"
    "  zymdb dpu uefi 3                      print the UEFI version\n"
    "  zymdb dpu uefi 3 4.2.0-13             record it";

constexpr char kLogExamples[] =
    "  zymdb dpu log 3\n"
    "  zymdb dpu log 3 --json | jq -r '.events[].Message'";

using Event = _ZYMDB_DPU_Event;

struct DpuOptions {
  int slot = 0;
  std::string message;
  std::string generator = "zymdb";
  uint32_t time = 0;
  std::string version;
};

using Options = std::shared_ptr<DpuOptions>;

template <size_t N>
void copy_argument(char (&field)[N], const std::string& text, const char* option) {
  if (text.size() > N) throw CLI::ValidationError(option, "longer than " + std::to_string(N) + " bytes");
  text.copy(field, N);
}

void append(const DpuOptions& options) {
  Event event{};
  event.Timestamp = options.time != 0 ? options.time : static_cast<uint32_t>(std::time(nullptr));
  copy_argument(event.GenID, options.generator, "--generator");
  copy_argument(event.Message, options.message, "--message");
  open_inventory(Opening::kCreating);
  require_status(dpu_insert_log(options.slot, &event, nullptr), "append the event");
}

void clear(const DpuOptions& options) {
  open_inventory(Opening::kChanging);
  require_status(dpu_clear_logs_by_slot(options.slot), "clear the events");
}

void uefi(const DpuOptions& options, bool is_given) {
  const auto slot = static_cast<unsigned>(options.slot);
  const std::string where = "slot " + std::to_string(options.slot);
  open_inventory(is_given ? Opening::kChanging : Opening::kReading);
  if (is_given) {
    const int status = zymdb_update_dpu_uefi_version(slot, options.version.c_str());
    if (status == ZYM_DB_STATUS_NOT_FOUND) throw Failure("there is no DPU in " + where);
    require_status(status, "record the UEFI version of " + where);
    require_no_client_error("record the UEFI version of " + where);
    return;
  }
  std::array<char, 64> version{};
  const int status = zymdb_get_dpu_uefi_version(slot, version.data(), version.size());
  if (status == ZYM_DB_STATUS_NOT_FOUND) throw Failure("no UEFI version of a DPU in " + where + " is known");
  require_status(status, "read the UEFI version of " + where);
  write_output(std::string(version.data()) + "\n");
}

void add_slot(CLI::App& command, const Options& options) {
  command.add_option("SLOT", options->slot, "Number of the DPU's slot")
      ->check(whole_number(1, INT_MAX))
      ->type_name("")
      ->required();
}

CLI::App& add_command(CLI::App& dpu, const char* name, const char* description, const Options& options) {
  auto& command = *dpu.add_subcommand(name, description);
  command.footer(kFooter);
  add_slot(command, options);
  return command;
}

void add_log(CommandTree& tree, CLI::App& dpu) {
  const auto options = std::make_shared<DpuOptions>();
  add_slot(
      add_listing(tree, dpu, {records::dpu_events([options] { return options->slot; }), kLogExamples, "log"}),
      options);
}

void add_append(CLI::App& dpu) {
  const auto options = std::make_shared<DpuOptions>();
  auto& command = add_command(dpu, "append", "Append an event; at 256 the oldest makes room", options);
  command.add_option("--message", options->message, "What happened")->type_name("TEXT")->required();
  command.add_option("--generator", options->generator, "Who reports it (default: zymdb)")->type_name("NAME");
  command.add_option("--time", options->time, "When, in seconds since 1970 (default: now)")
      ->type_name("SECONDS")
      ->check(whole_number(0, UINT32_MAX));
  command.callback([options] { append(*options); });
}

void add_clear(CLI::App& dpu) {
  const auto options = std::make_shared<DpuOptions>();
  auto& command = add_command(dpu, "clear", "Delete the events of the DPU in a slot", options);
  command.callback([options] { clear(*options); });
}

void add_uefi(CLI::App& dpu) {
  const auto options = std::make_shared<DpuOptions>();
  auto& command = add_command(dpu, "uefi", "Print or record the UEFI version of the DPU in a slot", options);
  auto* version =
      command.add_option("VERSION", options->version, "Record this version, cut to 31 characters");
  version->type_name("");
  command.callback([options, version] { uefi(*options, version->count() > 0); });
}

}  // namespace

void add_dpu(CommandTree& tree) {
  auto& dpu = *tree.app.add_subcommand("dpu", "Events and UEFI versions of data processing units");
  dpu.footer(kFooter);
  dpu.require_subcommand(1);
  add_log(tree, dpu);
  add_append(dpu);
  add_clear(dpu);
  add_uefi(dpu);
}

}  // namespace zymdb::tool
