// Filters and statements: texts of a fixed size, cut there.
#ifndef ZYMDB_SRC_DB_FILTER_H
#define ZYMDB_SRC_DB_FILTER_H

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace zymdb {

// `Filter<48>("Location=%d AND SlotNo=%d", location, slot)`. What does not fit is cut silently.
template <size_t N>
class Filter {
 public:
  [[gnu::format(printf, 2, 3)]] explicit Filter(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text_, N, format, arguments);
    va_end(arguments);
  }

  operator const char*() const { return text_; }
  char* data() { return text_; }

  static constexpr int size() { return static_cast<int>(N); }

 private:
  char text_[N] = {};
};

// A whole statement, for Query::Raw.
template <size_t N>
using Statement = Filter<N>;

}  // namespace zymdb

#endif
