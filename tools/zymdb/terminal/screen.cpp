#include "terminal/screen.h"

#include <algorithm>
#include <utility>

namespace zymdb::tool {
namespace {

constexpr char kEnter[] = "\033[?1049h\033[?25l";
constexpr char kLeave[] = "\033[?25h\033[?1049l";
constexpr char kClear[] = "\033[H\033[2J";

// The characters of a line; a byte that starts none belongs to the one before.
std::vector<std::string_view> characters(std::string_view line) {
  std::vector<std::string_view> result;
  for (size_t i = 0; i < line.size(); ++i) {
    const bool continues = (static_cast<unsigned char>(line[i]) & 0xC0) == 0x80 && !result.empty();
    if (continues)
      result.back() = {result.back().data(), result.back().size() + 1};
    else
      result.push_back(line.substr(i, 1));
  }
  return result;
}

std::string go_to(size_t line, size_t column) {
  return "\033[" + std::to_string(line + 1) + ";" + std::to_string(column + 1) + "H";
}

std::string redraw_line(size_t number, std::string_view before, std::string_view after) {
  auto old_characters = characters(before);
  auto new_characters = characters(after);
  const size_t width = std::max(old_characters.size(), new_characters.size());
  old_characters.resize(width, " ");
  new_characters.resize(width, " ");
  std::string text;
  for (size_t column = 0; column < width; ++column) {
    if (old_characters[column] == new_characters[column]) continue;
    const bool follows = column > 0 && old_characters[column - 1] != new_characters[column - 1];
    if (!follows) text += go_to(number, column);
    text += new_characters[column];
  }
  return text;
}

}  // namespace

Lines split_lines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::string redraw(const Lines& before, const Lines& after) {
  const auto line = [](const Lines& lines, size_t number) {
    return number < lines.size() ? std::string_view(lines[number]) : std::string_view();
  };
  std::string text;
  for (size_t number = 0; number < std::max(before.size(), after.size()); ++number)
    text += redraw_line(number, line(before, number), line(after, number));
  return text;
}

Screen::Screen(std::function<void(std::string_view)> write) : write_(std::move(write)) {
  write_(std::string(kEnter) + kClear);
}

Screen::~Screen() {
  try {
    write_(kLeave);
  } catch (...) {
    // The terminal is gone, and with it what was to be restored.
  }
}

void Screen::show(Lines lines) {
  const std::string changes = redraw(shown_, lines);
  shown_ = std::move(lines);
  if (!changes.empty()) write_(changes);
}

void Screen::forget() {
  shown_.clear();
  write_(kClear);
}

}  // namespace zymdb::tool
