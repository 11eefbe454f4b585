// The log, which is C++ by its interface: lines on standard error.
#include <controller/ruvo_log.h>

#include <cstdarg>
#include <cstdio>

namespace {

void print(const char* level, const char* format, va_list values) {
  std::fprintf(stderr, "%s: ", level);
  std::vfprintf(stderr, format, values);
  std::fputc('\n', stderr);
}

}  // namespace

namespace ruvo_log {

void logErr(const char* format, ...) {
  va_list values;
  va_start(values, format);
  print("error", format, values);
  va_end(values);
}

void logInfo(const char* format, ...) {
  va_list values;
  va_start(values, format);
  print("info", format, values);
  va_end(values);
}

void logWarn(const char* format, ...) {
  va_list values;
  va_start(values, format);
  print("warning", format, values);
  va_end(values);
}

}  // namespace ruvo_log
