#include "controller/ruvo_log.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/one_line.h"

namespace ruvo_log {
namespace {

bool to_standard_error() {
  const char* target = std::getenv("ZYMDB_LOG");
  return target != nullptr && std::strcmp(target, "stderr") == 0;
}

__attribute__((format(printf, 3, 0))) void log(int priority, const char* level, const char* format,
                                               va_list values) {
  char line[zymdb::kLineSize];
  std::vsnprintf(line, sizeof line, format, values);
  zymdb::keep_on_one_line(line);
  if (to_standard_error()) {
    std::fprintf(stderr, "zymdb %s: %s\n", level, line);
  } else {
    syslog(LOG_USER | priority, "%s", line);
  }
}

}  // namespace

void logErr(const char* format, ...) {
  va_list values;
  va_start(values, format);
  log(LOG_ERR, "error", format, values);
  va_end(values);
}

void logInfo(const char* format, ...) {
  va_list values;
  va_start(values, format);
  log(LOG_INFO, "info", format, values);
  va_end(values);
}

void logWarn(const char* format, ...) {
  va_list values;
  va_start(values, format);
  log(LOG_WARNING, "warning", format, values);
  va_end(values);
}

}  // namespace ruvo_log
