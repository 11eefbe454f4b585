// Shell completion, made from the command tree.
#ifndef ZYMDB_TOOLS_ZYMDB_COMPLETION_H
#define ZYMDB_TOOLS_ZYMDB_COMPLETION_H

#include <string>

#include "commands.h"

namespace zymdb::tool {

// A script that bash sources.
std::string bash_completion(const CommandTree& tree);

}  // namespace zymdb::tool

#endif
