#include "show/watch_screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <optional>
#include <utility>

#include "common/client_extensions.h"
#include "show/inventory.h"
#include "terminal/screen.h"
#include "terminal/table.h"
#include "terminal/terminal.h"
#include "terminal/waiting.h"

namespace zymdb::tool {
namespace {

using records::RecordType;

// The lines that a terminal has room for.
size_t terminal_height() {
  winsize size{};
  const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_row > 0;
  return known ? size.ws_row : 24;
}

std::string read_table(const RecordType& type, const View& view) {
  return render_table(list_arranged(type, view.arrangement, view.columns), {});
}

// What the screen has room for, and how much it has not.
Lines fitting(const std::string& table, size_t height) {
  auto lines = split_lines(table);
  if (lines.size() <= height) return lines;
  const size_t left = lines.size() - height + 1;
  lines.resize(height - 1);
  lines.push_back("... and " + std::to_string(left) + " more; a larger screen shows them");
  return lines;
}

// Waits for signals and for commits.
class Waiting {
 public:
  explicit Waiting(unsigned interval) : changes_(inventory_location()), interval_(interval) {}

  int wait() {
    return wait_for_change(signals_, changes_, interval_, [this] {
      const auto before = std::exchange(generation_, inventory_generation());
      return !generation_ || generation_ != before;
    });
  }

 private:
  Signals signals_;
  FileChanges changes_;
  unsigned interval_;
  std::optional<uint64_t> generation_ = inventory_generation();
};

void draw(const RecordType& type, const View& view, Waiting& waiting) {
  Screen screen(write_output);
  for (int signal = 0; !is_end(signal); signal = waiting.wait()) {
    if (signal != 0) screen.forget();
    screen.show(fitting(read_table(type, view), terminal_height()));
  }
}

void print(const RecordType& type, const View& view, Waiting& waiting) {
  std::string printed;
  do {
    const auto text = read_table(type, view);
    if (text != printed) write_output((printed.empty() ? "" : "\n") + text);
    printed = text;
  } while (!is_end(waiting.wait()));
}

}  // namespace

void watch_on_screen(const RecordType& type, const View& view, unsigned interval) {
  Waiting waiting(interval);
  if (isatty(STDOUT_FILENO) != 0)
    draw(type, view, waiting);
  else
    print(type, view, waiting);
}

}  // namespace zymdb::tool
