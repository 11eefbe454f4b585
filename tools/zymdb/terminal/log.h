// The logging library of this process: the command has a user in front of it, who is told what the library
// and the database client report; the system log is for services.
//
// log.cpp defines the functions of ruvo_log, and so takes the place of the platform's. The first error is
// kept for the one line that the command ends with; with ZYMDB_LOG=stderr the rest is printed as it comes.
#ifndef ZYMDB_TOOL_TERMINAL_LOG_H
#define ZYMDB_TOOL_TERMINAL_LOG_H

#include <string>

namespace zymdb::tool {

// The first error logged in this process, or an empty text. The first is the cause, what follows the
// complaints of those above it.
std::string first_logged_error();

// Keeps the library's lines for the system log out of it.
void leave_system_log_alone();

}  // namespace zymdb::tool

#endif
