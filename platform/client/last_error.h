// The last failure of each thread, and the one line that it leaves in the log.
#ifndef ZYMDB_PLATFORM_CLIENT_LAST_ERROR_H
#define ZYMDB_PLATFORM_CLIENT_LAST_ERROR_H

namespace zymdb::client {

// Logs why an operation fails and keeps the line. Returns the status.
__attribute__((format(printf, 2, 3))) int report_failure(int status, const char* format, ...) noexcept;

// For what is not worth a line in the log: keeps the status's own text. Returns the status.
int note_failure(int status) noexcept;

}  // namespace zymdb::client

#endif
