#include "terminal/log.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "controller/ruvo_log.h"
#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

[[gnu::format(printf, 1, 0)]] std::string format_line(const char* format, std::va_list arguments) {
  char line[4096];
  const int length = std::vsnprintf(line, sizeof line, format, arguments);
  return length < 0 ? std::string(format) : std::string(line);
}

bool wants_lines() {
  const char* destination = std::getenv("ZYMDB_LOG");
  return destination != nullptr && std::string_view(destination) == "stderr";
}

[[gnu::format(printf, 1, 0)]] void log(const char* format, std::va_list arguments) {
  if (wants_lines()) complain(format_line(format, arguments));
}

}  // namespace

void leave_system_log_alone() {
  setlogmask(LOG_MASK(LOG_EMERG));
}

}  // namespace zymdb::tool

// The library and the client call these through the dynamic linker, which finds the program's first.
namespace ruvo_log {

void logErr(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(format, arguments);
  va_end(arguments);
}

void logInfo(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(format, arguments);
  va_end(arguments);
}

void logWarn(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  zymdb::tool::log(format, arguments);
  va_end(arguments);
}

}  // namespace ruvo_log
