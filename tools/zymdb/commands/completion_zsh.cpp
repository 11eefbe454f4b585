#include "commands/completion.h"

namespace zymdb::tool {
namespace {

// The tree's part of the script is three `case` statements; this is what they are asked for.
constexpr char kHead[] = R"(#compdef zymdb
# zsh completion for zymdb, made by `zymdb completion zsh`

_zymdb() {
  local command=zymdb kind= cur=$words[CURRENT] prev=$words[CURRENT-1]
  local -a offers
  local -i i
  for ((i = 2; i < CURRENT; i++)); do
    _zymdb_value "$command" "$words[i-1]"
    [[ -n $kind ]] || _zymdb_enter "$command $words[i]"
  done
  if [[ $cur == --*=* ]]; then
    prev=${cur%%=*}
    compset -P 1 '*='
  fi
  _zymdb_value "$command" "$prev"
  case $kind in
    FILE) _files ;;
    DIR) _files -/ ;;
    LIST)
      compset -P '*,'
      compset -P -
      compadd -S '' -a offers ;;
    CONDITION) [[ $PREFIX == *=* ]] || compadd -S '=' -a offers ;;
    WORDS) compadd -a offers ;;
    "")
      _zymdb_words "$command"
      _describe word offers ;;
  esac
}
)";

// Read from a folder of completions the file is the function; else it has to say what it completes.
constexpr char kTail[] = R"(
if [[ $funcstack[1] == _zymdb ]]; then
  _zymdb "$@"
else
  compdef _zymdb zymdb
fi
)";

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string function(const std::string& name, const std::string& first, const std::string& body) {
  return "\n" + name + "() {\n" + first + "  case \"$*\" in\n" + body + "  esac\n}\n";
}

std::string when(const std::string& pattern, const std::string& commands) {
  return "    \"" + pattern + "\") " + commands + " ;;\n";
}

}  // namespace

std::string zsh_completion(const std::vector<CompletedCommand>& commands) {
  std::string enter, value, words;
  for (const CompletedCommand& command : commands) {
    if (command.path.find(' ') != std::string::npos) enter += when(command.path, "command=\"$*\"");
    for (const CompletedValue& each : command.values)
      value +=
          when(command.path + " " + each.option, std::string("kind=") + name_of(each.kind) + " offers=(" +
                                                     CLI::detail::join(each.words, " ") + ")");
    std::string offers;
    for (const auto& [word, help] : command.words)
      offers += "\n      " + quoted(help.empty() ? word : word + ":" + help);
    words += when(command.path, "offers=(" + offers + ")");
  }
  return kHead + function("_zymdb_enter", "", enter) +
         function("_zymdb_value", "  kind= offers=()\n", value) + function("_zymdb_words", "", words) + kTail;
}

}  // namespace zymdb::tool
