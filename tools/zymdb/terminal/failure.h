// How a command ends early. Nothing here crosses into the library: it is caught in run_program().
#ifndef ZYMDB_TOOL_TERMINAL_FAILURE_H
#define ZYMDB_TOOL_TERMINAL_FAILURE_H

#include <stdexcept>

namespace zymdb::tool {

// The command could not do its work. The message is one line, without the program's name.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What the command was given to work on is not what it can be: the same exit status as for a command line
// that is wrong.
class WrongInput : public Failure {
 public:
  using Failure::Failure;
};

// Whoever read standard output has closed it, and so has what it wanted.
struct ReaderGone {};

// The command has done its work, and what it compared is not the same: exit status 1, without another word.
struct Different {};

}  // namespace zymdb::tool

#endif
