#include "collect/sources/smbios/memory_position.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kMostDigits = 3;

bool is_digit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}
bool is_letter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

// The words and numbers of a name. "ChannelA" and "DIMMA1" have their letter as a word of its own.
std::vector<std::string> split(std::string_view name) {
  const std::string text = lower_case(name);
  std::vector<std::string> parts;
  for (auto at = text.begin(); at != text.end();) {
    const auto belongs = is_digit(*at) ? is_digit : is_letter;
    const auto end = std::find_if_not(at, text.end(), belongs);
    if (end == at) {
      ++at;
      continue;
    }
    std::string part(at, end);
    for (const std::string_view word : {"channel", "dimm"}) {
      if (part.size() != word.size() + 1 || !part.starts_with(word)) continue;
      parts.emplace_back(word);
      part.erase(0, word.size());
    }
    parts.push_back(std::move(part));
    at = end;
  }
  return parts;
}

class Name {
 public:
  explicit Name(std::string_view text) : parts_(split(text)) {}

  std::optional<uint32_t> node() const { return number_after({"node"}); }

  MemoryPosition read() const {
    MemoryPosition position;
    position.controller = number_after({"imc", "mc", "controller"});
    position.channel = number_after({"channel", "ch"});
    if (!position.channel) position.channel = letter_after("channel");
    position.module = number_after({"dimm"});
    const auto processor = find_number_after({"cpu", "proc", "processor", "p"});
    if (processor) {
      position.processor = number_at(*processor);
      read_pair_after(*processor, position);
    } else if (!parts_.empty() && parts_.front() == "socket") {
      position.processor = number_at(1);
    }
    return position;
  }

 private:
  std::optional<uint32_t> number_at(size_t index) const {
    if (index >= parts_.size() || !is_digit(parts_[index].front()) || parts_[index].size() > kMostDigits)
      return std::nullopt;
    return static_cast<uint32_t>(std::stoul(parts_[index]));
  }

  std::optional<uint32_t> letter_at(size_t index) const {
    if (index >= parts_.size() || parts_[index].size() != 1 || !is_letter(parts_[index].front()))
      return std::nullopt;
    return static_cast<uint32_t>(parts_[index].front() - 'a');
  }

  bool is_word(size_t index, const char* word) const {
    return index < parts_.size() && parts_[index] == word;
  }

  // The place of the first number that follows one of the words.
  std::optional<size_t> find_number_after(std::initializer_list<const char*> words) const {
    for (size_t i = 1; i < parts_.size(); ++i) {
      const bool named = std::ranges::any_of(words, [&](const char* word) { return is_word(i - 1, word); });
      if (named && number_at(i)) return i;
    }
    return std::nullopt;
  }

  std::optional<uint32_t> number_after(std::initializer_list<const char*> words) const {
    const auto place = find_number_after(words);
    return place ? number_at(*place) : std::nullopt;
  }

  std::optional<uint32_t> letter_after(const char* word) const {
    for (size_t i = 1; i < parts_.size(); ++i) {
      if (is_word(i - 1, word) && letter_at(i)) return letter_at(i);
    }
    return std::nullopt;
  }

  // "C3D1" has two numbers, "A1" a letter and a number.
  void read_pair_after(size_t processor, MemoryPosition& position) const {
    if (position.channel) return;
    for (size_t i = processor + 1; i + 1 < parts_.size(); ++i) {
      if (!letter_at(i) || !number_at(i + 1)) continue;
      const bool two_numbers = is_word(i, "c") && is_word(i + 2, "d") && number_at(i + 3);
      position.channel = two_numbers ? number_at(i + 1) : letter_at(i);
      position.module = number_at(two_numbers ? i + 3 : i + 1);
      return;
    }
  }

  std::vector<std::string> parts_;
};

}  // namespace

MemoryPosition memory_position(std::string_view locator, std::string_view bank) {
  const Name of_bank(bank);
  const Name of_module(locator);
  MemoryPosition position = of_bank.read();
  const MemoryPosition module = of_module.read();
  if (!position.processor) position.processor = module.processor;
  if (!position.controller) position.controller = module.controller;
  if (!position.channel) position.channel = module.channel;
  if (!position.module) position.module = module.module;
  if (!position.channel) position.module.reset();
  if (position.channel && !position.controller)
    position.controller = of_bank.node() ? of_bank.node() : of_module.node();
  return position;
}

void forget_shared_numbers(std::vector<MemoryPosition>& positions) {
  std::map<MemoryPosition, size_t> uses;
  for (const auto& position : positions) ++uses[position];
  for (auto& position : positions) {
    if (position.module && uses[position] > 1) position = {position.processor, {}, {}, {}};
  }
}

}  // namespace zymdb::collect
