#include "commands/completion.h"

namespace zymdb::tool {
namespace {

// The tree's part of the script is three `case` statements; this is what they are asked for.
constexpr char kHead[] = R"(# bash completion for zymdb, made by `zymdb completion bash`

_zymdb() {
  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} before=
  local command=zymdb kind= words= i IFS=$' \t\n'
  # "--option=value" arrives as three words, and so does the condition of an option.
  if [[ $cur == = ]]; then
    cur= before=${COMP_WORDS[COMP_CWORD-2]}
  elif [[ $prev == = ]]; then
    prev=${COMP_WORDS[COMP_CWORD-2]} before=${COMP_WORDS[COMP_CWORD-3]}
  fi
  for ((i = 1; i < COMP_CWORD; i++)); do
    _zymdb_value "$command" "${COMP_WORDS[i-1]}"
    [[ -n $kind ]] || _zymdb_enter "$command ${COMP_WORDS[i]}"
  done
  _zymdb_value "$command" "$before"
  [[ $kind != CONDITION ]] || return
  _zymdb_value "$command" "$prev"
  case $kind in
    FILE) mapfile -t COMPREPLY < <(compgen -f -- "$cur"); compopt -o filenames 2>/dev/null ;;
    DIR) mapfile -t COMPREPLY < <(compgen -d -- "$cur"); compopt -o filenames 2>/dev/null ;;
    LIST)
      before=
      [[ $cur != *,* ]] || before=${cur%,*},
      cur=${cur##*,}
      [[ $cur != -* ]] || before+=- cur=${cur#-}
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "$words" -- "$cur")
      compopt -o nospace 2>/dev/null ;;
    CONDITION)
      mapfile -t COMPREPLY < <(compgen -S = -W "$words" -- "$cur")
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
  std::string body = {};

  void add(const std::string& pattern, const std::string& commands) {
    body += "    \"" + pattern + "\") " + commands + " ;;\n";
  }
  std::string text(const std::string& first) const {
    return "\n" + name + "() {\n  " + first + "case \"$*\" in\n" + body + "  esac\n}\n";
  }
};

std::string joined(const std::vector<CompletedWord>& words) {
  std::string text;
  for (const auto& [word, help] : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

}  // namespace

std::string bash_completion(const std::vector<CompletedCommand>& commands) {
  ShellCase enter{"_zymdb_enter"}, value{"_zymdb_value"}, words{"_zymdb_words"};
  for (const CompletedCommand& command : commands) {
    if (command.path.find(' ') != std::string::npos) enter.add(command.path, "command=\"$*\"");
    for (const CompletedValue& each : command.values)
      value.add(command.path + " " + each.option, std::string("kind=") + name_of(each.kind) + " words='" +
                                                      CLI::detail::join(each.words, " ") + "'");
    words.add(command.path, "words='" + joined(command.words) + "'");
  }
  return kHead + enter.text("") + value.text("kind= words=\n  ") + words.text("") + kTail;
}

}  // namespace zymdb::tool
