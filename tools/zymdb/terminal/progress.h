// A progress bar for work that turns out to be long.
#ifndef ZYMDB_TOOL_TERMINAL_PROGRESS_H
#define ZYMDB_TOOL_TERMINAL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string_view>

namespace zymdb::tool {

// Nothing is drawn in the first half second, so that short work leaves no trace; then ten times a second at
// most. The bar occupies the line that the cursor is on.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;
  using Sink = std::function<void(std::string_view)>;  // the terminal

  Progress(Sink sink, size_t width, std::function<Clock::time_point()> now = Clock::now);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void update(size_t done, size_t total);

  // Removes the bar, to make place for other output; the next update draws it again.
  void clear();

 private:
  Sink sink_;
  size_t width_;
  std::function<Clock::time_point()> now_;
  Clock::time_point next_;
  bool drawn_ = false;
};

}  // namespace zymdb::tool

#endif
