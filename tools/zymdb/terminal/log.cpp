#include "terminal/log.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string_view>

#include "controller/ruvo_log.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

std::mutex mutex;
std::string first_error;

[[gnu::format(printf, 1, 0)]] std::string format_line(const char* format, std::va_list arguments) {
  char line[4096];
  const int length = std::vsnprintf(line, sizeof line, format, arguments);
  return length < 0 ? std::string(format) : std::string(line);
}

bool wants_everything() {
  const char* destination = std::getenv("ZYMDB_LOG");
  return destination != nullptr && std::string_view(destination) == "stderr";
}

// The library's note on a port that it passes over on its way to the one that was asked for.
bool is_note(std::string_view line) {
  return line.starts_with("Find a physical port, ");
}

[[gnu::format(printf, 2, 0)]] void log(bool error, const char* format, std::va_list arguments) {
  const auto line = format_line(format, arguments);
  const std::lock_guard lock(mutex);
  if (error && first_error.empty() && !is_note(line)) {
    first_error = line;
  } else if (wants_everything()) {
    complain(line);
  }
}

}  // namespace

std::string first_logged_error() {
  const std::lock_guard lock(mutex);
  return first_error;
}

void leave_system_log_alone() {
  setlogmask(LOG_MASK(LOG_EMERG));
}

}  // namespace zymdb::tool

// The library and the client call these through the dynamic linker, which finds the program's first.
namespace ruvo_log {

void logErr(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(true, format, arguments);
  va_end(arguments);
}

void logInfo(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(false, format, arguments);
  va_end(arguments);
}

void logWarn(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(false, format, arguments);
  va_end(arguments);
}

}  // namespace ruvo_log
