#include "client/dialect/known_conditions.h"

#include <algorithm>
#include <charconv>

namespace zymdb::client {
namespace {

// What stands for a value in a pattern. No condition that has a meaning has them.
constexpr char kNumber = '\x01';
constexpr char kText = '\x02';

constexpr size_t kMostDigits = 18;  // that fit 64 bits whatever they are
constexpr size_t kMostValues = 64;
constexpr size_t kLongest = 2048;

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
  Known known{catalog_, table_,           pattern_,           translation.shape, translation.arguments,
              {},       translation.tail, translation.grouped};
  if (!find_sources(known.arguments, known.sources)) return;
  // What they view is the caller's.
  for (Argument& argument : known.arguments) argument.text = {};
  *place_ = std::move(known);
}

// Into the pattern and its values. False where a value cannot be told from what is around it.
bool KnownConditions::cut(std::string_view text) {
  pattern_.clear();
  values_.clear();
  while (!text.empty()) {
    const char c = text[0];
    size_t length = 1;
    if (c == kNumber || c == kText) return false;
    if (c == '"' || c == '\'') {
      const size_t end = text.find(c, 1);
      // A quote inside is written twice.
      if (end == text.npos || (end + 1 < text.size() && text[end + 1] == c)) return false;
      values_.push_back({text.substr(1, end - 1)});
      pattern_.push_back(kText);
      length = end + 1;
    } else if (is_word_character(c)) {
      length = static_cast<size_t>(std::ranges::find_if_not(text, is_word_character) - text.begin());
      const std::string_view word = text.substr(0, length);
      if (word.find_first_not_of("0123456789") != word.npos)
        pattern_.append(word);
      else if (!add_number(word, text.substr(length)))
        return false;
    } else {
      pattern_.push_back(c);
    }
    text.remove_prefix(length);
  }
  return values_.size() <= kMostValues;
}

bool KnownConditions::add_number(std::string_view digits, std::string_view after) {
  const bool is_plain = digits.size() <= kMostDigits && (digits.size() == 1 || digits[0] != '0');
  if (!is_plain || after.starts_with('.')) return false;
  Value value{digits, 0, true};
  std::from_chars(digits.data(), digits.data() + digits.size(), value.integer);
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
