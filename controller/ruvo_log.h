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

/** Logs an error: `format` and what follows it, as printf takes them. */
void logErr(const char* format, ...) __attribute__((format(printf, 1, 2)));
/** Logs what happened: `format` and what follows it, as printf takes them. */
void logInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
/** Logs a warning: `format` and what follows it, as printf takes them. */
void logWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace ruvo_log
#endif

#endif
