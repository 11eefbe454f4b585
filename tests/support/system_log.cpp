#include "support/system_log.h"

#include <cstdarg>
#include <cstdio>

std::vector<std::string>& system_log() {
  static std::vector<std::string> log;
  return log;
}

namespace {

[[gnu::format(printf, 2, 0)]] void note(int priority, const char* format, va_list arguments) {
  char text[4096];
  std::vsnprintf(text, sizeof text, format, arguments);
  system_log().push_back(std::to_string(priority) + ": " + text);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"), format(printf, 2, 3))) void syslog(int priority, const char* format,
                                                                         ...) {
  va_list arguments;
  va_start(arguments, format);
  note(priority, format, arguments);
  va_end(arguments);
}

// What a fortified build calls instead.
__attribute__((visibility("default"), format(printf, 3, 4))) void __syslog_chk(int priority, int,
                                                                               const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  note(priority, format, arguments);
  va_end(arguments);
}

}  // extern "C"
