#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>

#include "commands/commands.h"
#include "records/network.h"
#include "show/inventory.h"
#include "show/ports.h"
#include "terminal/screen.h"
#include "terminal/table.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using records::RecordType;

constexpr char kFooter[] =
    "Reads the inventory again and again, and shows what has changed, until it is interrupted (Ctrl-C).\n"
    "On a terminal only the changed places are drawn; elsewhere the table is printed anew after a change.\n"
    "\n"
    "Examples:\n"
    "  zymdb watch ports\n"
    "  zymdb watch ports --adapter \"slot 3\" --interval 5";

struct WatchOptions {
  std::shared_ptr<PortSelection> ports = std::make_shared<PortSelection>();
  unsigned interval = 1;  // seconds
};

// Signals that end the watch or ask for the whole picture. They are taken when the command waits, and so
// never come between two halves of a drawing.
class Signals {
 public:
  Signals() {
    sigemptyset(&set_);
    for (const int signal : {SIGINT, SIGTERM, SIGWINCH, SIGCONT}) sigaddset(&set_, signal);
    sigprocmask(SIG_BLOCK, &set_, &before_);
  }
  ~Signals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  // The signal that ended the wait, or 0.
  int wait(unsigned seconds) const {
    const timespec timeout{static_cast<time_t>(seconds), 0};
    int signal = -1;
    do {
      signal = sigtimedwait(&set_, nullptr, &timeout);
    } while (signal < 0 && errno == EINTR);
    return std::max(signal, 0);
  }

 private:
  sigset_t set_{};
  sigset_t before_{};
};

// The lines that a terminal has room for.
size_t terminal_height() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
  return known ? size.ws_row : 24;
}

std::string read_table(const RecordType& type) {
  return render_table(type.list(records::default_fields(type)), {});
}

// What the screen has room for, and how much it has not.
Lines fitting(const std::string& table, size_t height) {
  auto lines = split_lines(table);
  if (lines.size() <= height) return lines;
  const size_t left = lines.size() - height + 1;
  lines.resize(height - 1);
  lines.push_back("... and " + std::to_string(left) + " more; --adapter and --function show some of them");
  return lines;
}

bool is_end(int signal) {
  return signal == SIGINT || signal == SIGTERM;
}

void watch_on_terminal(const RecordType& type, unsigned interval) {
  const Signals signals;
  Screen screen(write_output);
  for (int signal = 0; !is_end(signal); signal = signals.wait(interval)) {
    if (signal != 0) screen.forget();
    screen.show(fitting(read_table(type), terminal_height()));
  }
}

void watch_in_file(const RecordType& type, unsigned interval) {
  const Signals signals;
  std::string printed;
  do {
    const auto text = read_table(type);
    if (text != printed) write_output((printed.empty() ? "" : "\n") + text);
    printed = text;
  } while (!is_end(signals.wait(interval)));
}

void run(const WatchOptions& options) {
  const auto type = records::physical_ports(port_choice(options.ports));
  open_inventory(Opening::kReading);
  if (isatty(STDOUT_FILENO) != 0)
    watch_on_terminal(type, options.interval);
  else
    watch_in_file(type, options.interval);
}

}  // namespace

void add_watch(CommandTree& tree) {
  auto& watch = *tree.app.add_subcommand("watch", "Show what changes in the inventory, as it changes");
  watch.footer(kFooter);
  watch.require_subcommand(1);
  auto& ports = *watch.add_subcommand("ports", "Network ports and their links");
  ports.footer(kFooter);
  const auto options = std::make_shared<WatchOptions>();
  add_port_options(ports, *options->ports);
  ports.add_option("--interval", options->interval, "Seconds between two looks (default: 1)")
      ->check(whole_number(1, 86400))
      ->type_name("SECONDS");
  ports.callback([options] { run(*options); });
}

}  // namespace zymdb::tool
