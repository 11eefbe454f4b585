// Shell completion, made from the command tree.
#ifndef ZYMDB_TOOL_COMMANDS_COMPLETION_H
#define ZYMDB_TOOL_COMMANDS_COMPLETION_H

#include <string>

#include "commands/commands.h"

namespace zymdb::tool {

// A script that bash sources.
std::string bash_completion(const CommandTree& tree);

}  // namespace zymdb::tool

#endif
