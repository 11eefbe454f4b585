#include "db/system_log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zymdb {
namespace {

// More than any message of ours needs, with every text as long as its field.
constexpr size_t kLongestMessage = 1024;

bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

size_t line_ends_of(std::string_view format) {
  return format.size() - (format.find_last_not_of('\n') + 1);
}

}  // namespace

void log_to_system(int priority, const char* format, ...) {
  // Lists tell of each of their rows: a line that the process does not let through is not written either.
  if ((setlogmask(0) & LOG_MASK(LOG_PRI(priority))) == 0) return;
  char message[kLongestMessage];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  const size_t length = std::strlen(message);
  std::replace_if(message, message + length - std::min(length, line_ends_of(format)), is_control, ' ');
  syslog(priority, "%s", message);
}

}  // namespace zymdb
