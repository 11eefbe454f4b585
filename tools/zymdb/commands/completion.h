// Shell completion, made from the command tree: what may stand where is said once, and each shell's script
// knows how its shell asks and is answered.
#ifndef ZYMDB_TOOL_COMMANDS_COMPLETION_H
#define ZYMDB_TOOL_COMMANDS_COMPLETION_H

#include <string>
#include <vector>

#include "commands/commands.h"

namespace zymdb::tool {

// How the value of an option is completed; in scripts by these names.
enum class ValueKind : uint8_t { kFile, kFolder, kWords, kList, kCondition, kOther };
const char* name_of(ValueKind kind);

struct CompletedWord {
  std::string word;
  std::string help;  // one line
};

struct CompletedValue {
  std::string option;  // "--columns"
  ValueKind kind = ValueKind::kOther;
  std::vector<std::string> words;
};

struct CompletedCommand {
  std::string path;                    // "zymdb show adapters"
  std::vector<CompletedWord> words;    // commands below it, options that hold in it, words that it takes
  std::vector<CompletedValue> values;  // of those options that take one
};

// Every command of the tree, each before those below it.
std::vector<CompletedCommand> completed_commands(const CommandTree& tree);

// Scripts that the shells source, or find in their folders of completions.
std::string bash_completion(const std::vector<CompletedCommand>& commands);
std::string zsh_completion(const std::vector<CompletedCommand>& commands);
std::string fish_completion(const std::vector<CompletedCommand>& commands);

}  // namespace zymdb::tool

#endif
