// The command line: its tree, checks of what stands on it, and what is said when something is wrong with it.
#ifndef ZYMDB_TOOL_TERMINAL_COMMAND_LINE_H
#define ZYMDB_TOOL_TERMINAL_COMMAND_LINE_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zymdb::tool {

struct CommandTree {
  CLI::App app;
  // For completion: the words that an option takes. An option that takes a list of them, separated by commas,
  // has the type name of kListType, one that takes a comparison with a value kConditionType; one that takes a
  // file or folder has kFileType or kFolderType.
  std::map<const CLI::Option*, std::vector<std::string>> words;
};

inline constexpr char kListType[] = "LIST";
inline constexpr char kConditionType[] = "FIELD=VALUE";
inline constexpr char kFileType[] = "FILE";
inline constexpr char kFolderType[] = "DIR";

// Checks of an option's value.
CLI::Validator whole_number(uint64_t least, uint64_t most);
CLI::Validator one_of(const std::vector<std::string>& words);

// Adds `--color WHEN`.
void add_color_option(CommandTree& tree, CLI::App& command, std::string& color);

// Adds `--format FORMAT`, one of `formats`, and `--json`, which is short for "json".
struct FormatOptions {
  CLI::Option* format;
  CLI::Option* json;
};
FormatOptions add_format_options(CommandTree& tree, CLI::App& command, std::string& format,
                                 const std::vector<std::string>& formats);

// "unknown KIND 'WORD'", with the known word that was perhaps meant, or else all of them.
std::string unknown_word(const std::string& kind, const std::string& word,
                         const std::vector<std::string>& known);

// One line about what is wrong with the command line, and which help to read.
std::string explain(const CLI::App& app, const CLI::ParseError& error);

}  // namespace zymdb::tool

#endif
