// A table that stays on the terminal and changes there.
#ifndef ZYMDB_TOOL_TERMINAL_SCREEN_H
#define ZYMDB_TOOL_TERMINAL_SCREEN_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb::tool {

using Lines = std::vector<std::string>;

Lines split_lines(std::string_view text);

// What makes a terminal that shows `before` show `after`: for each run of characters that differ the way
// there and the characters. Every character is taken to be one column wide.
std::string redraw(const Lines& before, const Lines& after);

// The terminal's other screen, without a cursor; the destructor brings back what was there.
class Screen {
 public:
  explicit Screen(std::function<void(std::string_view)> write);
  ~Screen();
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void show(Lines lines);

  // The terminal has another size, or lost what it showed: the next show() draws everything.
  void forget();

 private:
  std::function<void(std::string_view)> write_;
  Lines shown_;
};

}  // namespace zymdb::tool

#endif
