// One message is one line: values that were logged with it must not begin another.
#ifndef ZYMDB_COMMON_ONE_LINE_H
#define ZYMDB_COMMON_ONE_LINE_H

#include <cstddef>
#include <cstring>

namespace zymdb {

// What a line of the log holds.
inline constexpr size_t kLineSize = 2048;

inline void keep_on_one_line(char* line) {
  size_t length = std::strlen(line);
  while (length > 0 && line[length - 1] == '\n') line[--length] = 0;
  for (char* c = line; *c != 0; ++c) {
    if (static_cast<unsigned char>(*c) < 0x20 || *c == 0x7F) *c = ' ';
  }
}

}  // namespace zymdb

#endif
