// The journal of the system, for what a service tells.
#ifndef ZYMDB_TOOL_TERMINAL_SYSTEM_JOURNAL_H
#define ZYMDB_TOOL_TERMINAL_SYSTEM_JOURNAL_H

#include <string>
#include <vector>

namespace zymdb::tool {

// Sends one entry of fields, "NAME=value" each. Throws Failure when it cannot be sent.
void send_to_journal(const std::vector<std::string>& fields);

}  // namespace zymdb::tool

#endif
