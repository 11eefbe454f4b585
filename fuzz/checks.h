// What the targets demand of the code under test: a demand that does not hold is a crash, which libFuzzer
// keeps.
#ifndef ZYMDB_FUZZ_CHECKS_H
#define ZYMDB_FUZZ_CHECKS_H

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace zymdb::fuzz {

inline void require(bool holds, const char* what, std::string_view text = {}) {
  if (holds) return;
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
  std::abort();
}

// Every text ends within its field.
template <size_t... Sizes>
void require_ended(const char (&... texts)[Sizes]) {
  (require(strnlen(texts, Sizes) < Sizes, "a text goes on beyond its field", {texts, Sizes}), ...);
}

}  // namespace zymdb::fuzz

#endif
