#include "db/filter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string_view>

namespace zymdb {
namespace {

// Keeps what fits before the NUL, and counts the rest.
class Writer {
 public:
  Writer(char* text, size_t size) : text_(text), room_(size - 1) {}

  void add(std::string_view part) {
    const size_t kept = std::min(part.size(), room_ - std::min(room_, length_));
    if (kept != 0) std::memcpy(text_ + length_, part.data(), kept);
    length_ += part.size();
  }
  void add_number(unsigned number) {
    char digits[10];
    char* begin = std::end(digits);
    do {
      *--begin = static_cast<char>('0' + number % 10);
    } while ((number /= 10) != 0);
    add({begin, std::end(digits)});
  }
  void add_number(int number) {
    if (number >= 0) return add_number(static_cast<unsigned>(number));
    add("-");
    add_number(0U - static_cast<unsigned>(number));
  }
  int end() {
    text_[std::min(length_, room_)] = '\0';
    return static_cast<int>(length_);
  }

 private:
  char* text_;
  size_t room_;
  size_t length_ = 0;
};

// False at a conversion that it does not know.
bool write(Writer& writer, const char* format, va_list arguments) {
  while (true) {
    const char* const part = format;
    while (*format != '%' && *format != '\0') ++format;
    writer.add({part, format});
    if (*format == '\0') return true;
    switch (format[1]) {
      case 'd':
        writer.add_number(va_arg(arguments, int));
        break;
      case 'u':
        writer.add_number(va_arg(arguments, unsigned));
        break;
      case 's':
        writer.add(va_arg(arguments, const char*));
        break;
      default:
        return false;
    }
    format += 2;
  }
}

}  // namespace

// Nearly all filters hold nothing but plain numbers and texts, for which printf takes as long as the client
// takes to find a result that it kept.
int write_filter(char* text, size_t size, const char* format, va_list arguments) {
  Writer writer(text, size);
  va_list plain;
  va_copy(plain, arguments);
  const bool is_written = write(writer, format, plain);
  va_end(plain);
  return is_written ? writer.end() : std::vsnprintf(text, size, format, arguments);
}

}  // namespace zymdb
