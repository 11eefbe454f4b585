#include "terminal/command_line.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>

namespace zymdb::tool {
namespace {

using Words = std::vector<std::string>;

bool same_letter(char one, char other) {
  return std::tolower(static_cast<unsigned char>(one)) == std::tolower(static_cast<unsigned char>(other));
}

// Letters to change, add, leave out or swap with their neighbour to make one word of another.
size_t distance(const std::string& from, const std::string& to) {
  std::vector<std::vector<size_t>> least(from.size() + 1, std::vector<size_t>(to.size() + 1));
  std::iota(least[0].begin(), least[0].end(), size_t{0});
  for (size_t i = 1; i <= from.size(); ++i) {
    least[i][0] = i;
    for (size_t j = 1; j <= to.size(); ++j) {
      const size_t changed = least[i - 1][j - 1] + (same_letter(from[i - 1], to[j - 1]) ? 0 : 1);
      least[i][j] = std::min({changed, least[i - 1][j] + 1, least[i][j - 1] + 1});
      const bool is_swap =
          i > 1 && j > 1 && same_letter(from[i - 1], to[j - 2]) && same_letter(from[i - 2], to[j - 1]);
      if (is_swap) least[i][j] = std::min(least[i][j], least[i - 2][j - 2] + 1);
    }
  }
  return least.back().back();
}

// A third of the letters may be wrong, and a word of two letters still has one.
std::optional<std::string> closest(const std::string& word, const Words& known) {
  const size_t most = std::max<size_t>(1, word.size() / 3);
  const auto found =
      std::ranges::min_element(known, {}, [&](const auto& each) { return distance(word, each); });
  if (word.empty() || found == known.end() || distance(word, *found) > most) return std::nullopt;
  return *found;
}

// The command that the user was about, below the program and above it: the innermost one named comes last.
std::vector<const CLI::App*> path_of(const CLI::App& app) {
  std::vector<const CLI::App*> path{&app};
  while (!path.back()->get_subcommands().empty()) path.push_back(path.back()->get_subcommands().back());
  return path;
}

Words commands_of(const CLI::App& command) {
  Words names;
  for (const auto* each :
       command.get_subcommands([](const CLI::App* below) { return !below->get_name().empty(); }))
    names.push_back(each->get_name());
  return names;
}

Words options_of(const std::vector<const CLI::App*>& path) {
  Words names;
  for (const auto* command : path) {
    for (const auto* option : command->get_options()) {
      for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

std::string explain_word(const std::vector<const CLI::App*>& path, const std::string& word) {
  if (word.starts_with('-')) {
    const auto meant = closest(word.substr(0, word.find('=')), options_of(path));
    return "unknown option '" + word + "'" + (meant ? "; did you mean '" + *meant + "'?" : "");
  }
  const auto commands = commands_of(*path.back());
  return commands.empty() ? "'" + word + "' is more than the command takes"
                          : unknown_word("command", word, commands);
}

bool cut_end(std::string& text, std::string_view end) {
  if (!text.ends_with(end)) return false;
  text.erase(text.size() - end.size());
  return true;
}

std::string joined(const Words& words) {
  return CLI::detail::join(words, ", ");
}

std::string all_of(const Words& words) {
  return (words.size() == 1 ? "there is " : "there are ") + joined(words);
}

std::string between_brackets(const std::string& text) {
  const auto first = text.find('[') + 1;
  return text.substr(first, text.rfind(']') - first);
}

// What the parser says, in the words of the other messages.
std::string in_our_words(const std::vector<const CLI::App*>& path, std::string text) {
  if (text == "A subcommand is required") return "a command is missing; " + all_of(commands_of(*path.back()));
  if (cut_end(text, " is required")) return text + " is missing";
  if (cut_end(text, " missing")) return text.substr(0, text.find(':')) + ": its value is missing";
  if (const auto at = text.find(" excludes "); at != std::string::npos)
    return text.substr(0, at) + " and " + text.substr(at + 10) + " do not go together";
  if (text.starts_with("Requires at most 1 option"))
    return "only one can be given of " + joined(CLI::detail::split(between_brackets(text), ','));
  if (text.starts_with("Could not convert: ")) return text.substr(19) + " is no number that it takes";
  return text;
}

}  // namespace

CLI::Validator whole_number(uint64_t least, uint64_t most) {
  return {[=](const std::string& text) -> std::string {
            uint64_t number = 0;
            const char* const last = text.data() + text.size();
            const auto [end, error] = std::from_chars(text.data(), last, number);
            if (error == std::errc() && end == last && number >= least && number <= most) return {};
            return "'" + text + "' is no whole number from " + std::to_string(least) + " to " +
                   std::to_string(most);
          },
          ""};
}

CLI::Validator one_of(const Words& words) {
  return {[words](const std::string& text) -> std::string {
            if (std::ranges::find(words, text) != words.end()) return {};
            return "'" + text + "' is none of " + joined(words);
          },
          ""};
}

void add_color_option(CommandTree& tree, CLI::App& command, std::string& color) {
  const std::vector<std::string> choices{"auto", "always", "never"};
  tree.words[command.add_option("--color", color, "Colour: auto (on a terminal), always, never")
                 ->check(one_of(choices))
                 ->type_name("WHEN")] = choices;
}

FormatOptions add_format_options(CommandTree& tree, CLI::App& command, std::string& format,
                                 const Words& formats) {
  auto* option = command.add_option("--format", format, "What to print: " + joined(formats));
  option->check(one_of(formats))->type_name("FORMAT");
  tree.words[option] = formats;
  auto* json = command.add_flag_callback(
      "--json", [&format] { format = "json"; }, "Print JSON");
  json->excludes(option);
  return {option, json};
}

std::string unknown_word(const std::string& kind, const std::string& word, const Words& known) {
  const auto meant = closest(word, known);
  return "unknown " + kind + " '" + word + "'; " + (meant ? "did you mean '" + *meant + "'?" : all_of(known));
}

std::string explain(const CLI::App& app, const CLI::ParseError& error) {
  const auto path = path_of(app);
  const auto left = app.remaining(true);
  std::string command;
  for (const auto* each : path) command += (command.empty() ? "" : " ") + each->get_name();
  const auto problem = left.empty() ? in_our_words(path, error.what()) : explain_word(path, left.front());
  return problem + " (try '" + command + " --help')";
}

}  // namespace zymdb::tool
