// Every exported operation that takes or gives texts, in its arguments or in records; the project's tests
// compare the names with the headers.
#ifndef ZYMDB_FUZZ_OPERATIONS_H
#define ZYMDB_FUZZ_OPERATIONS_H

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb::fuzz {

// The texts of an input, of which there may be fewer than an operation takes.
class Texts {
 public:
  // Cuts at line ends into at most `most` texts; the last one keeps its line ends.
  Texts(std::string_view lines, size_t most);

  size_t size() const { return texts_.size(); }

  // Empty when there is none.
  const std::string& operator[](size_t place) const;
  // Null when there is none.
  const char* or_null(size_t place) const;
  // What an operation takes writable.
  unsigned char* bytes(size_t place) { return reinterpret_cast<unsigned char*>(text(place)); }
  char* text(size_t place) { return place < texts_.size() ? texts_[place].data() : empty_.data(); }

 private:
  std::vector<std::string> texts_;
  std::string empty_;
};

struct Operation {
  enum class Kind {
    kReads,   // its texts are arguments; it changes no row
    kShows,   // its texts are those of the table's rows, stored before; it changes no row
    kWrites,  // it may change rows of the table, or of those whose names are separated by blanks
  };

  const char* name;
  Kind kind;
  const char* table;  // null: the first text names it
  size_t texts;       // the most that it makes use of
  void (*run)(Texts& texts);
};

std::span<const Operation> operations();

}  // namespace zymdb::fuzz

#endif
