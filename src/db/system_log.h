// Lines of the system log.
#ifndef ZYMDB_SRC_DB_SYSTEM_LOG_H
#define ZYMDB_SRC_DB_SYSTEM_LOG_H

#include <syslog.h>

namespace zymdb {

constexpr int kLogError = LOG_USER | LOG_ERR;
constexpr int kLogInformation = LOG_USER | LOG_INFO;

// Writes one message, formatted as printf does. Devices and callers cannot begin a line of their own in it:
// the control characters of their texts become blanks. Only the line ends that `format` itself ends in stay.
[[gnu::format(printf, 2, 3)]] void log_to_system(int priority, const char* format, ...);

}  // namespace zymdb

#endif
