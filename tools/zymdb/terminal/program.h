// How a program of ours begins and ends.
#ifndef ZYMDB_TOOL_TERMINAL_PROGRAM_H
#define ZYMDB_TOOL_TERMINAL_PROGRAM_H

#include <functional>

namespace zymdb::tool {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// What main() returns: the status of `work`, or what it threw, which is told in one line.
int run_program(const std::function<int()>& work);

}  // namespace zymdb::tool

#endif
