/**
 * The logging library, which a controller provides. It is C++: a C program has nothing to include here.
 *
 * One call is one message. Values that come from devices are logged as they are: it is the log that keeps a
 * message on one line.
 */
#ifndef ZYMDB_CONTROLLER_RUVO_LOG_H
#define ZYMDB_CONTROLLER_RUVO_LOG_H

#ifdef __cplusplus
namespace ruvo_log {

/** Logs an error, formatted as printf does. */
void logErr(const char* format, ...) __attribute__((format(printf, 1, 2)));
/** Logs what happened, formatted as printf does. */
void logInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
/** Logs a warning, formatted as printf does. */
void logWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace ruvo_log
#endif

#endif
