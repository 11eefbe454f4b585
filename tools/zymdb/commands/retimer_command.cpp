#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>

#include "commands/commands.h"
#include "common/bytes.h"
#include "common/source_file.h"
#include "terminal/failure.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zymdb_firmware.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "An update is done by the retimer service; it takes minutes, and an hour at most. FILE holds the request "
    "as\n"
    "the service takes it: a block of 128 bytes, two 32-bit numbers (little-endian) and three bytes.\n"
    "\n"
    "`progress` follows the update of a slot until it has come to 100 percent.\n"
    "\n"
    "Examples:\n"
    "  zymdb retimer update request.bin\n"
    "  zymdb retimer progress 3\n"
    "  zymdb retimer progress 3 --once";

using Request = _ZYMDB_Retimer_Update_Req;

constexpr size_t kRequestSize = 139;
constexpr uint32_t kDone = 100;  // percent
constexpr auto kInterval = std::chrono::milliseconds(200);

Request read_request(const std::string& path) {
  const std::string content = read_source(path);
  if (content.size() != kRequestSize)
    throw Failure(path + ": a request has " + std::to_string(kRequestSize) + " bytes, this has " +
                  std::to_string(content.size()));
  const Bytes bytes = as_bytes(content);
  Request request{};
  std::memcpy(request.Data, bytes.data(), sizeof request.Data);
  request.Param1 = little_endian<uint32_t>(bytes, 128).value_or(0);
  request.Param2 = little_endian<uint32_t>(bytes, 132).value_or(0);
  request.Byte1 = bytes[136];
  request.Byte2 = bytes[137];
  request.Byte3 = bytes[138];
  return request;
}

// The service may answer any number, these too.
const char* meaning_of(int32_t result) {
  switch (result) {
    case -1:
      return " (no complete reply)";
    case -2:
      return " (no socket)";
    case -3:
      return " (the retimer service cannot be reached)";
    case -4:
      return " (the request could not be sent)";
    case -5:
      return " (waiting for the reply failed)";
    case -6:
      return " (no reply within an hour)";
    default:
      return "";
  }
}

void update(const std::string& path) {
  const Request request = read_request(path);
  const int32_t result = retimer_update_fw(&request);
  if (result != 0) throw Failure("the update failed: " + std::to_string(result) + meaning_of(result));
}

struct ProgressOptions {
  uint32_t slot = 0;
  bool once = false;
};

std::optional<_ZYMDB_Retimer_Progress> read_progress(uint32_t slot) {
  _ZYMDB_Retimer_Progress progress{};
  if (retimer_get_fw_update_progress(slot, &progress) != 0) return std::nullopt;
  return progress;
}

std::string line_of(const _ZYMDB_Retimer_Progress& progress) {
  return "stage " + std::to_string(progress.Stage) + ", " + std::to_string(progress.Progress) + "%\n";
}

void write_to_stderr(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stderr);
}

// Shows a bar on a terminal, and a line per change elsewhere.
class Follower {
 public:
  Follower() {
    if (stderr_is_terminal()) bar_.emplace(write_to_stderr, stderr_width());
  }

  void show(const _ZYMDB_Retimer_Progress& progress) {
    const auto line = line_of(progress);
    if (bar_ && progress.Progress < kDone) {
      bar_->update(progress.Progress, kDone);
    } else if (line != printed_) {
      if (bar_) bar_->clear();
      write_output(line);
    }
    printed_ = line;
  }

 private:
  std::optional<Progress> bar_;
  std::string printed_;
};

void follow(const ProgressOptions& options) {
  const std::string slot = "slot " + std::to_string(options.slot);
  auto progress = read_progress(options.slot);
  if (!progress) throw Failure("no update of the retimer in " + slot + " is under way");
  if (options.once) {
    write_output(line_of(*progress));
    return;
  }
  Follower follower;
  follower.show(*progress);
  while (progress->Progress < kDone) {
    std::this_thread::sleep_for(kInterval);
    progress = read_progress(options.slot);
    if (!progress) throw Failure("the update of the retimer in " + slot + " is no longer told of");
    follower.show(*progress);
  }
}

void add_update(CLI::App& retimer) {
  auto& command = *retimer.add_subcommand("update", "Ask the retimer service for a firmware update");
  command.footer(kFooter);
  const auto path = std::make_shared<std::string>();
  command.add_option("FILE", *path, "The request")->type_name("")->required();
  command.callback([path] { update(*path); });
}

void add_progress(CLI::App& retimer) {
  auto& command = *retimer.add_subcommand("progress", "Follow the update of the retimer in a slot");
  command.footer(kFooter);
  const auto options = std::make_shared<ProgressOptions>();
  command.add_option("SLOT", options->slot, "Number of the retimer's slot")
      ->check(whole_number(0, UINT32_MAX))
      ->type_name("")
      ->required();
  command.add_flag("--once", options->once, "Print how far it is, and do not follow");
  command.callback([options] { follow(*options); });
}

}  // namespace

void add_retimer(CommandTree& tree) {
  auto& retimer = *tree.app.add_subcommand("retimer", "Firmware updates of retimers");
  retimer.footer(kFooter);
  retimer.require_subcommand(1);
  add_update(retimer);
  add_progress(retimer);
}

}  // namespace zymdb::tool
