#include <memory>

#include "collect/record/record_machine.h"
#include "commands/commands.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "DIR is made, or is empty. It gets everything that `zymdb collect` reads of this machine: parts of /sys, "
    "/proc\n"
    "and /etc, and what drivers tell. `zymdb collect --sysfs DIR/sys` finds the same machine in it. What "
    "only root\n"
    "may read is named, and missing, when somebody else records.\n"
    "\n"
    "With --sanitize serial numbers, asset tags, UUIDs and network addresses are others of the same length, "
    "the\n"
    "same one everywhere, so that the recording can be given away. The host's name stays.\n"
    "\n"
    "Examples:\n"
    "  zymdb record this-server\n"
    "  zymdb record --sanitize for-a-report && tar -czf for-a-report.tar.gz for-a-report";

void run(const collect::Recording& recording) {
  const auto files = collect::record_machine(recording, {.notice = complain, .progress = {}});
  write_output(std::to_string(files) + " files in " + recording.folder + "\n");
}

}  // namespace

void add_record(CommandTree& tree) {
  auto& command =
      *tree.app.add_subcommand("record", "Copy what a collection reads of a machine into a folder");
  command.footer(kFooter);
  const auto recording = std::make_shared<collect::Recording>();
  command.add_option("DIR", recording->folder, "The folder to write")->required()->type_name(kFolderType);
  command.add_option("--sysfs", recording->sysfs, "A recorded machine: the root of a copy of /sys")
      ->type_name(kFolderType);
  command.add_flag("--sanitize", recording->is_sanitized,
                   "Replace serial numbers, asset tags, UUIDs and network addresses");
  command
      .add_option("--timeout", recording->timeout,
                  "Seconds that a device may take to answer, from 1 to 3600 (default: 5)")
      ->check(whole_number(1, 3600))
      ->type_name("SECONDS");
  command.callback([recording] { run(*recording); });
}

}  // namespace zymdb::tool
