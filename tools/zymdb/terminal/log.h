// The logging library of this process: the command has a user in front of it, who is told what the library
// and the database client report; the system log is for services.
//
// log.cpp defines the functions of ruvo_log, and so takes the place of the platform's. With ZYMDB_LOG=stderr
// lines are printed as they come, else they are dropped: what went wrong is told by statuses and by the
// client's last error.
#ifndef ZYMDB_TOOL_TERMINAL_LOG_H
#define ZYMDB_TOOL_TERMINAL_LOG_H

namespace zymdb::tool {

// Keeps the library's lines for the system log out of it.
void leave_system_log_alone();

}  // namespace zymdb::tool

#endif
