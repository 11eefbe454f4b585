#include "db/filter.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

namespace zymdb {
namespace {

// Keeps what fits before the NUL, and counts the rest.
class Writer {
 public:
  Writer(char* text, size_t size) : next_(text), last_(text + size - 1) {}

  void add(const char* begin, const char* end) {
    const ptrdiff_t kept = std::min(end - begin, last_ - next_);
    std::memcpy(next_, begin, static_cast<size_t>(kept));
    next_ += kept;
    length_ += end - begin;
  }
  void add_number(unsigned number, bool is_signed) {
    const bool is_negative = is_signed && static_cast<int>(number) < 0;
    if (is_negative) number = 0U - number;
    char digits[11];
    char* begin = std::end(digits);
    do {
      *--begin = static_cast<char>('0' + number % 10);
    } while ((number /= 10) != 0);
    if (is_negative) *--begin = '-';
    add(begin, std::end(digits));
  }
  int end() {
    *next_ = '\0';
    return static_cast<int>(length_);
  }

 private:
  char* next_;
  char* last_;  // where the NUL fits
  ptrdiff_t length_ = 0;
};

// False at a conversion that it does not know, and at no text.
bool write(Writer& writer, const char* format, va_list arguments) {
  while (true) {
    const char* const part = format;
    while (*format != '%' && *format != '\0') ++format;
    writer.add(part, format);
    if (*format == '\0') return true;
    const char conversion = format[1];
    if (conversion == 's') {
      const char* const text = va_arg(arguments, const char*);
      if (text == nullptr) return false;
      writer.add(text, text + std::strlen(text));
    } else if (conversion == 'd' || conversion == 'u') {
      writer.add_number(va_arg(arguments, unsigned), conversion == 'd');
    } else {
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
