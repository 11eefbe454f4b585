#include "client/dialect/known_conditions.h"

#include <algorithm>

namespace zymdb::client {
namespace {

// What stands for a value in a pattern. No condition that has a meaning has them.
constexpr char kNumber = '\x01';
constexpr char kText = '\x02';

constexpr size_t kMostDigits = 18;  // that fit 64 bits whatever they are
constexpr size_t kMostValues = 64;
constexpr size_t kLongest = 2048;

// What a character begins.
enum class Part : uint8_t { kBetween, kWord, kDigit, kQuote, kMark };

constexpr auto kParts = [] {
  std::array<Part, 256> parts{};
  for (size_t i = 0; i < parts.size(); ++i) {
    const char c = static_cast<char>(i);
    if (is_word_character(c)) parts[i] = c >= '0' && c <= '9' ? Part::kDigit : Part::kWord;
    if (c == '"' || c == '\'') parts[i] = Part::kQuote;
    if (c == kNumber || c == kText) parts[i] = Part::kMark;
  }
  return parts;
}();

Part part_of(char c) {
  return kParts[static_cast<unsigned char>(c)];
}

// Where it ends, and whether it is digits only.
struct Word {
  size_t end;
  bool is_number = true;
};

Word word_at(std::string_view text, size_t at) {
  Word word{at};
  for (; word.end < text.size(); ++word.end) {
    const Part part = part_of(text[word.end]);
    if (part != Part::kWord && part != Part::kDigit) break;
    word.is_number &= part == Part::kDigit;
  }
  return word;
}

uint64_t hash_of(std::string_view text) {
  uint64_t hash = 14695981039346656037U;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return hash ^ (hash >> 32);
}

}  // namespace

bool KnownConditions::recall(const Catalog& catalog, const Table& table, std::string_view text,
                             Translation& out) {
  place_ = nullptr;
  if (text.size() > kLongest || !cut(text)) return false;
  catalog_ = catalog.number();
  table_ = &table;
  place_ = &places_[hash_of(pattern_) % kPlaces];
  const Known& known = *place_;
  if (known.catalog != catalog_ || known.table != table_ || known.pattern != pattern_) return false;
  out.clear();
  out.shape = known.shape;
  out.arguments = known.arguments;
  out.tail = known.tail;
  out.grouped = known.grouped;
  out.bare = known.bare;
  for (size_t i = 0; i < known.sources.size(); ++i) {
    if (known.sources[i] == kNoValue) continue;
    const Value& value = values_[known.sources[i]];
    Argument& argument = out.arguments[i];
    if (argument.type == Argument::Type::kInteger)
      argument.integer = value.integer;
    else
      argument.text = value.text;
  }
  return true;
}

void KnownConditions::note(const Translation& translation) {
  if (place_ == nullptr) return;
  Known known{catalog_,
              table_,
              pattern_,
              translation.shape,
              translation.arguments,
              {},
              translation.tail,
              translation.grouped,
              translation.bare};
  if (!find_sources(known.arguments, known.sources)) return;
  // What they view is the caller's.
  for (Argument& argument : known.arguments) argument.text = {};
  *place_ = std::move(known);
}

// Into the pattern and its values. False where a value cannot be told from what is around it.
bool KnownConditions::cut(std::string_view text) {
  pattern_.clear();
  values_.clear();
  size_t kept = 0;  // up to here the text is in the pattern
  for (size_t at = 0; at < text.size();) {
    const Part part = part_of(text[at]);
    if (part == Part::kBetween || part == Part::kWord) {
      at = part == Part::kWord ? word_at(text, at).end : at + 1;
      continue;
    }
    if (part == Part::kMark) return false;
    pattern_.append(text, kept, at - kept);
    if (part == Part::kQuote) {
      const char quote = text[at];
      const size_t end = text.find(quote, at + 1);
      // A quote inside is written twice.
      if (end == text.npos || (end + 1 < text.size() && text[end + 1] == quote)) return false;
      values_.push_back({text.substr(at + 1, end - at - 1)});
      pattern_.push_back(kText);
      at = kept = end + 1;
      continue;
    }
    const Word word = word_at(text, at);
    const std::string_view digits = text.substr(at, word.end - at);
    kept = at;
    at = word.end;
    if (!word.is_number) continue;
    if (!add_number(digits, text.substr(at))) return false;
    kept = at;
  }
  pattern_.append(text, kept);
  return values_.size() <= kMostValues;
}

bool KnownConditions::add_number(std::string_view digits, std::string_view after) {
  const bool is_plain = digits.size() <= kMostDigits && (digits.size() == 1 || digits[0] != '0');
  if (!is_plain || after.starts_with('.')) return false;
  Value value{digits, 0, true};
  for (const char digit : digits) value.integer = value.integer * 10 + (digit - '0');
  values_.push_back(value);
  pattern_.push_back(kNumber);
  return true;
}

// Every value has to be an argument, in their order: a count after LIMIT, for one, stands in the shape.
bool KnownConditions::find_sources(const std::vector<Argument>& arguments,
                                   std::vector<uint8_t>& sources) const {
  size_t used = 0;
  for (const Argument& argument : arguments) {
    if (is_value(argument, used)) {
      sources.push_back(static_cast<uint8_t>(used++));
      continue;
    }
    // A word that is a text, and a text that is not there.
    const bool is_constant = argument.type == Argument::Type::kPlaceholder ||
                             (argument.type == Argument::Type::kText && argument.text.empty());
    if (!is_constant) return false;
    sources.push_back(kNoValue);
  }
  return used == values_.size();
}

bool KnownConditions::is_value(const Argument& argument, size_t place) const {
  if (place == values_.size()) return false;
  const Value& value = values_[place];
  if (argument.type == Argument::Type::kInteger) return value.is_number && argument.integer == value.integer;
  return argument.type == Argument::Type::kText && argument.text.data() == value.text.data() &&
         argument.text.size() == value.text.size();
}

}  // namespace zymdb::client
