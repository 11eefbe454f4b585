// What the code under test tells the system log: linked into a test program, this takes the log's place.
#ifndef ZYMDB_TESTS_SUPPORT_SYSTEM_LOG_H
#define ZYMDB_TESTS_SUPPORT_SYSTEM_LOG_H

#include <string>
#include <vector>

// One entry per message: "11: text", with the priority (facility and level) before it.
std::vector<std::string>& system_log();

#endif
