#include "commands/completion.h"

#include <algorithm>

#include "terminal/terminal.h"

namespace zymdb::tool {
namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  source <(zymdb completion bash)                                 this shell\n"
    "  zymdb completion bash >~/.local/share/bash-completion/completions/zymdb   every shell of this user";

// The tree's part of the script is three `case` statements; this is what they are asked for.
constexpr char kHead[] = R"(# bash completion for zymdb, made by `zymdb completion bash`

_zymdb() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
  local command=zymdb kind= words= i IFS=$' \t\n'
  # "--option=value" arrives as three words.
  if [[ $cur == = ]]; then
    cur=
  elif [[ $prev == = ]]; then
    prev=${COMP_WORDS[COMP_CWORD-2]}
  fi
  for ((i = 1; i < COMP_CWORD; i++)); do
    _zymdb_value "$command" "${COMP_WORDS[i-1]}"
    [[ -n $kind ]] || _zymdb_enter "$command ${COMP_WORDS[i]}"
  done
  _zymdb_value "$command" "$prev"
  case $kind in
    FILE) mapfile -t COMPREPLY < <(compgen -f -- "$cur"); compopt -o filenames 2>/dev/null ;;
    DIR) mapfile -t COMPREPLY < <(compgen -d -- "$cur"); compopt -o filenames 2>/dev/null ;;
    LIST)
      local before=
      [[ $cur != *,* ]] || before=${cur%,*},
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "$words" -- "${cur##*,}")
      compopt -o nospace 2>/dev/null ;;
    WORDS) mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur") ;;
    "")
      _zymdb_words "$command"
      mapfile -t COMPREPLY < <(compgen -W "$words" -- "$cur") ;;
  esac
}
)";

constexpr char kTail[] = "\ncomplete -F _zymdb zymdb\n";

// One shell function, a `case` over its arguments.
struct ShellCase {
  std::string name;
  std::string body;

  void add(const std::string& pattern, const std::string& commands) {
    body += "    \"" + pattern + "\") " + commands + " ;;\n";
  }
  std::string text(const std::string& first) const {
    return "\n" + name + "() {\n  " + first + "case \"$*\" in\n" + body + "  esac\n}\n";
  }
};

struct Script {
  ShellCase enter{"_zymdb_enter", {}};
  ShellCase value{"_zymdb_value", {}};
  ShellCase words{"_zymdb_words", {}};
};

std::string join(const std::vector<std::string>& words) {
  return CLI::detail::join(words, " ");
}

bool takes_value(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

void add_value(Script& script, const CommandTree& tree, const std::string& path, const CLI::Option& option) {
  const auto known = tree.words.find(&option);
  const bool has_words = known != tree.words.end();
  const auto words = has_words ? join(known->second) : std::string();
  const auto type = option.get_type_name();
  const auto kind = has_words && type != kListType ? "WORDS" : type;
  for (const auto& name : option.get_lnames()) {
    script.value.add(path + " --" + name, "kind=" + kind + " words='" + words + "'");
  }
}

void add_names(std::vector<std::string>& words, const CLI::Option& option) {
  for (const auto& name : option.get_lnames()) {
    const auto word = "--" + name;
    if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(word);
  }
}

std::vector<std::string> subcommand_names(const CLI::App& command) {
  std::vector<std::string> names;
  for (const auto* subcommand : command.get_subcommands({})) names.push_back(subcommand->get_name());
  return names;
}

// Options of a command hold in the commands below it, too.
void add_command(Script& script, const CommandTree& tree, const CLI::App& command, const std::string& path,
                 std::vector<const CLI::Option*> inherited) {
  const auto own = command.get_options();
  inherited.insert(inherited.end(), own.begin(), own.end());
  auto words = subcommand_names(command);
  for (const auto* option : inherited) {
    add_names(words, *option);
    if (takes_value(*option)) add_value(script, tree, path, *option);
  }
  script.words.add(path, "words='" + join(words) + "'");
  for (const auto* subcommand : command.get_subcommands({})) {
    const auto below = path + " " + subcommand->get_name();
    script.enter.add(below, "command=\"$*\"");
    add_command(script, tree, *subcommand, below, inherited);
  }
}

}  // namespace

std::string bash_completion(const CommandTree& tree) {
  Script script;
  add_command(script, tree, tree.app, tree.app.get_name(), {});
  return kHead + script.enter.text("") + script.value.text("kind= words=\n  ") + script.words.text("") +
         kTail;
}

void add_completion(CommandTree& tree) {
  auto& command = *tree.app.add_subcommand("completion", "Print a shell's completion of this command");
  command.footer(kFooter);
  command.require_subcommand(1);
  auto& bash = *command.add_subcommand("bash", "Completion for bash");
  bash.footer(kFooter);
  bash.callback([&tree] { write_output(bash_completion(tree)); });
}

}  // namespace zymdb::tool
