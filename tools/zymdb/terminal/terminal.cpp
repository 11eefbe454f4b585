#include "terminal/terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

bool is_set(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool terminal_knows_colors() {
  const char* terminal = std::getenv("TERM");
  return terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

// 0, or the errno of what failed.
int write_all(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

void write_line(std::string line, std::string_view message) {
  for (const char c : message) line += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? ' ' : c;
  line += '\n';
  // Where nobody can be told there is nobody left to tell.
  static_cast<void>(write_all(STDERR_FILENO, line));
}

}  // namespace

void prepare_standard_streams() {
  int descriptor = 0;
  do {
    descriptor = open("/dev/null", O_RDONLY);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
  std::signal(SIGPIPE, SIG_IGN);
}

bool want_colors(std::string_view choice) {
  if (choice != "auto") return choice == "always";
  return !is_set("NO_COLOR") && isatty(STDOUT_FILENO) != 0 && terminal_knows_colors();
}

bool stderr_is_terminal() {
  return isatty(STDERR_FILENO) != 0;
}

size_t stderr_width() {
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

void write_output(std::string_view text) {
  const int error = write_all(STDOUT_FILENO, text);
  if (error == EPIPE) throw ReaderGone();
  if (error != 0) throw Failure(std::string("cannot write the output: ") + std::strerror(error));
}

void complain(std::string_view message) {
  write_line("zymdb: ", message);
}

void tell_journal(int urgency, std::string_view message) {
  write_line("<" + std::to_string(urgency) + ">", message);
}

}  // namespace zymdb::tool
