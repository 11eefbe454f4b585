#include "commands/completion.h"

#include <algorithm>
#include <array>

#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

using ScriptOf = std::string (*)(const std::vector<CompletedCommand>&);

struct Shell {
  const char* name;
  const char* help;
  ScriptOf script;
  const char* footer;
};
constexpr Shell kShells[] = {
    {"bash", "Completion for bash", bash_completion,
     "Examples:\n"
     "  source <(zymdb completion bash)                                 this shell\n"
     "  zymdb completion bash >~/.local/share/bash-completion/completions/zymdb   every shell of this user"},
    {"zsh", "Completion for zsh", zsh_completion,
     "Examples:\n"
     "  source <(zymdb completion zsh)                 this shell, after compinit\n"
     "  zymdb completion zsh >~/.zsh/completions/_zymdb    every shell whose fpath has that folder"},
    {"fish", "Completion for fish", fish_completion,
     "Examples:\n"
     "  zymdb completion fish | source                 this shell\n"
     "  zymdb completion fish >~/.config/fish/completions/zymdb.fish   every shell of this user"},
};

constexpr char kFooter[] =
    "Examples:\n"
    "  source <(zymdb completion bash)\n"
    "  source <(zymdb completion zsh)\n"
    "  zymdb completion fish | source";

ValueKind kind_of(const CLI::Option& option, bool has_words) {
  const auto type = option.get_type_name();
  if (type == kFileType) return ValueKind::kFile;
  if (type == kFolderType) return ValueKind::kFolder;
  if (type == kListType) return ValueKind::kList;
  if (type == kConditionType) return ValueKind::kCondition;
  return has_words ? ValueKind::kWords : ValueKind::kOther;
}

// The first line of a description.
std::string help_of(const std::string& description) {
  return description.substr(0, description.find('\n'));
}

void add_option(const CommandTree& tree, const CLI::Option& option, CompletedCommand& command) {
  const auto known = tree.words.find(&option);
  const auto words = known != tree.words.end() ? known->second : std::vector<std::string>();
  for (const auto& name : option.get_lnames()) {
    const std::string word = "--" + name;
    if (std::ranges::find(command.words, word, &CompletedWord::word) != command.words.end()) continue;
    command.words.push_back({word, help_of(option.get_description())});
    if (option.get_items_expected_max() > 0)
      command.values.push_back({word, kind_of(option, !words.empty()), words});
  }
  if (!option.get_positional()) return;
  for (const auto& word : words) command.words.push_back({word, ""});
}

// Options of a command hold in the commands below it, too.
void add_command(const CommandTree& tree, const CLI::App& app, const std::string& path,
                 std::vector<const CLI::Option*> inherited, std::vector<CompletedCommand>& commands) {
  const auto own = app.get_options();
  inherited.insert(inherited.end(), own.begin(), own.end());
  CompletedCommand command{path, {}, {}};
  for (const auto* below : app.get_subcommands({}))
    command.words.push_back({below->get_name(), help_of(below->get_description())});
  for (const auto* option : inherited) add_option(tree, *option, command);
  commands.push_back(std::move(command));
  for (const auto* below : app.get_subcommands({}))
    add_command(tree, *below, path + " " + below->get_name(), inherited, commands);
}

}  // namespace

const char* name_of(ValueKind kind) {
  constexpr std::array<const char*, 6> kNames = {"FILE", "DIR", "WORDS", "LIST", "CONDITION", "OTHER"};
  return kNames[static_cast<size_t>(kind)];
}

std::vector<CompletedCommand> completed_commands(const CommandTree& tree) {
  std::vector<CompletedCommand> commands;
  add_command(tree, tree.app, tree.app.get_name(), {}, commands);
  return commands;
}

void add_completion(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("completion", "Print a shell's completion of this command");
  command.footer(kFooter);
  command.require_subcommand(1);
  for (const auto& [name, help, script, footer] : kShells) {
    auto& shell = *command.add_subcommand(name, help);
    shell.footer(footer);
    shell.callback([&tree, script = script] { write_output(script(completed_commands(tree))); });
  }
}

}  // namespace zymdb::tool
