// Filters and statements: texts of a fixed size, cut there.
#ifndef ZYMDB_SRC_DB_FILTER_H
#define ZYMDB_SRC_DB_FILTER_H

#include <cstdarg>
#include <cstddef>

#include "controller/ruvo_log.h"

namespace zymdb {

// As vsnprintf does, and returns what it does.
[[gnu::format(printf, 3, 0)]] int write_filter(char* text, size_t size, const char* format,
                                               va_list arguments);

// `Filter<48>("Location=%d AND SlotNo=%d", location, slot)`. What does not fit is cut: no failure of its own,
// though most statements fail with what is left.
template <size_t N>
class Filter {
 public:
  [[gnu::format(printf, 2, 3)]] explicit Filter(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = write_filter(text_, N, format, arguments);
    va_end(arguments);
    is_cut_ = length >= size();
  }

  operator const char*() const { return text_; }
  const char* text() const { return text_; }  // for an argument list without types
  char* data() { return text_; }

  bool is_cut() const { return is_cut_; }

  static constexpr int size() { return static_cast<int>(N); }

 private:
  char text_[N] = {};
  bool is_cut_ = false;
};

// Follows the log line of a failure with the reason that a cut filter may be: what was cut off, an end of a
// text for example, is not there to be seen.
template <size_t N>
void log_if_cut(const Filter<N>& filter) {
  if (filter.is_cut()) ruvo_log::logErr("the filter was cut at %zu bytes", N - 1);
}

// A whole statement, for Query::Raw.
template <size_t N>
using Statement = Filter<N>;

}  // namespace zymdb

#endif
