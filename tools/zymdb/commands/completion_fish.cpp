#include "commands/completion.h"

namespace zymdb::tool {
namespace {

constexpr char kHead[] = "# fish completion for zymdb, made by `zymdb completion fish`\n";

// The tree's part of the script is three `switch` statements; this is what asks them.
constexpr char kTail[] = R"fish(
function __zymdb_complete
    set -l cur (commandline -ct)
    set -l command zymdb
    set -l option
    for token in (commandline -opc)[2..]
        if set -q option[1]
            set -e option[1]
        else if test -n "$(__zymdb_value "$command $token")"
            set option $token
        else if __zymdb_enter "$command $token"
            set command "$command $token"
        end
    end
    set -l before
    if string match -qr -- '^--[^=]*=' $cur
        set option (string replace -r -- '=.*' '' $cur)
        set before "$option="
        set cur (string replace -r -- '^[^=]*=' '' $cur)
    end
    if not set -q option[1]
        __zymdb_words $command
        return
    end
    set -l value (__zymdb_value "$command $option")
    switch "$value[1]"
        case FILE
            set -l paths (__fish_complete_path $cur)
            test (count $paths) -eq 0; or string replace -r -- '^' "$before" $paths
        case DIR
            set -l paths (__fish_complete_directories $cur)
            test (count $paths) -eq 0; or string replace -r -- '^' "$before" $paths
        case LIST
            printf '%s\n' "$before$(string match -r -- '^(?:.*,)?-?' $cur)"$value[2..]
        case CONDITION
            string match -q -- '*=*' $cur; or printf '%s=\n' "$before"$value[2..]
        case WORDS
            printf '%s\n' "$before"$value[2..]
    end
end

complete -c zymdb -f -a '(__zymdb_complete)'
)fish";

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') result += '\\';
    result += c;
  }
  return result + "'";
}

std::string function(const std::string& name, const std::string& body) {
  return "\nfunction " + name + "\n    switch \"$argv\"\n" + body + "    end\nend\n";
}

std::string when(const std::string& pattern, const std::string& commands) {
  return "        case " + quoted(pattern) + "\n            " + commands + "\n";
}

}  // namespace

std::string fish_completion(const std::vector<CompletedCommand>& commands) {
  std::string enter, value, words;
  for (const CompletedCommand& command : commands) {
    if (command.path.find(' ') != std::string::npos) enter += when(command.path, "return 0");
    for (const CompletedValue& each : command.values)
      value += when(command.path + " " + each.option, std::string("printf '%s\\n' ") + name_of(each.kind) +
                                                          " " + CLI::detail::join(each.words, " "));
    std::string offers = "printf '%s\\t%s\\n'";
    for (const auto& [word, help] : command.words)
      offers += " \\\n                " + word + " " + quoted(help);
    words += when(command.path, offers);
  }
  enter += "        case '*'\n            return 1\n";
  return kHead + function("__zymdb_enter", enter) + function("__zymdb_value", value) +
         function("__zymdb_words", words) + kTail;
}

}  // namespace zymdb::tool
