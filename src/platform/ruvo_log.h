// The controller's logging library.
#ifndef ZYMDB_SRC_PLATFORM_RUVO_LOG_H
#define ZYMDB_SRC_PLATFORM_RUVO_LOG_H

namespace ruvo_log {

void logErr(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace ruvo_log

#endif
