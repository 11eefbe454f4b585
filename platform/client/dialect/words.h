// The words of the filter dialect that are no names: keywords and functions.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_WORDS_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_WORDS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "client/dialect/catalog.h"

namespace zymdb::client {

// What a keyword changes: the clause that follows it, or nothing.
enum class Turn : uint8_t { kNone, kSelect, kFrom, kCondition, kGroup, kTail };

// What a keyword is to the values beside it.
enum class Link : uint8_t { kNone, kAnd, kOr, kNot, kCompares, kBetween, kIn, kSelect };

struct Keyword {
  std::string_view text;
  Turn turn;
  Link link = Link::kNone;
};

inline constexpr std::array kKeywords = {
    Keyword{"AND", Turn::kNone, Link::kAnd},
    Keyword{"OR", Turn::kNone, Link::kOr},
    Keyword{"NOT", Turn::kNone, Link::kNot},
    Keyword{"IN", Turn::kNone, Link::kIn},
    Keyword{"IS", Turn::kNone, Link::kCompares},
    Keyword{"NULL", Turn::kNone},
    Keyword{"LIKE", Turn::kNone, Link::kCompares},
    Keyword{"ESCAPE", Turn::kNone},
    Keyword{"BETWEEN", Turn::kNone, Link::kBetween},
    Keyword{"ISNULL", Turn::kNone},
    Keyword{"NOTNULL", Turn::kNone},
    Keyword{"EXISTS", Turn::kNone},
    Keyword{"DISTINCT", Turn::kNone},
    Keyword{"BY", Turn::kNone},
    Keyword{"ASC", Turn::kNone},
    Keyword{"DESC", Turn::kNone},
    Keyword{"OFFSET", Turn::kNone},
    Keyword{"SELECT", Turn::kSelect, Link::kSelect},
    Keyword{"FROM", Turn::kFrom},
    Keyword{"WHERE", Turn::kCondition},
    Keyword{"HAVING", Turn::kCondition},
    Keyword{"GROUP", Turn::kGroup},
    Keyword{"ORDER", Turn::kTail},
    Keyword{"LIMIT", Turn::kTail},
};

struct Function {
  std::string_view text;
  bool aggregate;
};

inline constexpr std::array kFunctions = {
    Function{"count", true},   Function{"sum", true},       Function{"min", true},
    Function{"max", true},     Function{"avg", true},       Function{"total", true},
    Function{"lower", false},  Function{"upper", false},    Function{"length", false},
    Function{"abs", false},    Function{"trim", false},     Function{"ltrim", false},
    Function{"rtrim", false},  Function{"substr", false},   Function{"ifnull", false},
    Function{"nullif", false}, Function{"coalesce", false},
};

template <class Entry, size_t N>
const Entry* find_word(const std::array<Entry, N>& entries, std::string_view word) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const Entry& entry) { return same_word(entry.text, word); });
  return found == entries.end() ? nullptr : &*found;
}

// By the low bits of a first letter, the lengths of the keywords that begin with it, one bit each.
inline constexpr auto kKeywordLengths = [] {
  std::array<uint32_t, 32> lengths{};
  for (const Keyword& keyword : kKeywords) lengths[keyword.text[0] & 0x1F] |= 1u << keyword.text.size();
  return lengths;
}();

// Most words are none, which their first letter and length tell.
inline const Keyword* find_keyword(std::string_view word) {
  if (word.empty() || word.size() >= 32) return nullptr;
  if ((kKeywordLengths[word[0] & 0x1F] >> word.size() & 1) == 0) return nullptr;
  return find_word(kKeywords, word);
}

}  // namespace zymdb::client

#endif
