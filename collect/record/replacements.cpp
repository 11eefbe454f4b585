#include "collect/record/replacements.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

#include "common/text.h"

namespace zymdb::collect {
namespace {

constexpr size_t kShortest = 5;
constexpr size_t kMakersDigits = 6;
constexpr size_t kMostDigits = 16;
constexpr size_t kFewestDigits = 12;
constexpr std::string_view kHexDigits = "0123456789abcdef";

std::string hex_digits(std::string_view text) {
  if (text.starts_with("0x")) text.remove_prefix(2);
  std::string digits;
  std::ranges::copy_if(lower_case(text), std::back_inserter(digits),
                       [](char c) { return kHexDigits.find(c) != std::string_view::npos; });
  return digits.size() > kMostDigits ? digits.substr(digits.size() - kMostDigits) : digits;
}

std::string upper_case(std::string text) {
  std::ranges::transform(text, text.begin(), [](char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  });
  return text;
}

std::string grouped(const std::string& digits, size_t size, char separator) {
  std::string text;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i != 0 && i % size == 0) text += separator;
    text += digits[i];
  }
  return text;
}

std::string bytes_of(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes += static_cast<char>(kHexDigits.find(digits[i]) << 4 | kHexDigits.find(digits[i + 1]));
  return bytes;
}

// The first three numbers of a UUID with their least significant byte first.
std::string with_swapped_numbers(std::string bytes) {
  std::reverse(bytes.begin(), bytes.begin() + 4);
  std::reverse(bytes.begin() + 4, bytes.begin() + 6);
  std::reverse(bytes.begin() + 6, bytes.begin() + 8);
  return bytes;
}

bool is_filler(std::string_view digits) {
  return digits.find_first_not_of(digits.front()) == std::string_view::npos;
}

}  // namespace

// Of the same kind.
char Replacements::another(char c) {
  const auto one_of = [this](std::string_view all) {
    return all[std::uniform_int_distribution<size_t>(0, all.size() - 1)(random_)];
  };
  if (c >= '0' && c <= '9') return one_of("0123456789");
  if (c >= 'a' && c <= 'f') return one_of("abcdef");
  if (c >= 'A' && c <= 'F') return one_of("ABCDEF");
  if (c >= 'g' && c <= 'z') return one_of("ghijklmnopqrstuvwxyz");
  if (c >= 'G' && c <= 'Z') return one_of("GHIJKLMNOPQRSTUVWXYZ");
  return c;
}

// The first characters stay.
std::string Replacements::another_of(std::string_view text, size_t kept) {
  std::string result;
  constexpr int kAttempts = 1000;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    result = text.substr(0, kept);
    for (const char c : text.substr(kept)) result += another(c);
    if (result != text && known_text(result) && used_.insert(result).second) break;
  }
  return result;
}

void Replacements::add(const std::string& value, const std::string& replacement) {
  pairs_.emplace(value, replacement);
}

void Replacements::add_text(std::string_view text) {
  text = trimmed(text);
  if (text.size() < kShortest || !known_text(text) || pairs_.contains(std::string(text))) return;
  add(std::string(text), another_of(text, 0));
}

void Replacements::add_address(std::string_view text) {
  const std::string digits = hex_digits(text);
  if (digits.size() < kFewestDigits || is_filler(digits) || pairs_.contains(digits)) return;
  const std::string other = another_of(digits, kMakersDigits);
  const auto add_both = [&](auto spell) {
    add(spell(digits), spell(other));
    add(upper_case(spell(digits)), upper_case(spell(other)));
  };
  add_both([](const std::string& plain) { return plain; });
  add_both([](const std::string& plain) { return grouped(plain, 2, ':'); });
  add_both([](const std::string& plain) { return grouped(plain, 2, '-'); });
  add_both([](const std::string& plain) { return grouped(plain, 4, ':'); });
  add(bytes_of(digits), bytes_of(other));
}

void Replacements::add_uuid(std::string_view text) {
  const auto uuid = known_uuid(text);
  if (!uuid || pairs_.contains(*uuid)) return;
  const std::string other = another_of(*uuid, 0);
  add(*uuid, other);
  add(upper_case(*uuid), upper_case(other));
  const auto bytes = [](std::string digits) {
    std::erase(digits, '-');
    return bytes_of(digits);
  };
  add(bytes(*uuid), bytes(other));
  add(with_swapped_numbers(bytes(*uuid)), with_swapped_numbers(bytes(other)));
}

void Replacements::add_bytes(std::string_view bytes) {
  if (bytes.empty() || is_filler(bytes) || pairs_.contains(std::string(bytes))) return;
  std::string other(bytes);
  while (other == bytes || !used_.insert(other).second)
    std::ranges::generate(other, [this] { return static_cast<char>(random_()); });
  add(std::string(bytes), other);
}

std::string Replacements::applied(std::string_view content) const {
  std::vector<std::string_view> values;
  for (const auto& [value, replacement] : pairs_) values.push_back(value);
  std::ranges::stable_sort(values, std::ranges::greater(), &std::string_view::size);
  std::string result(content);
  std::vector<bool> is_replaced(content.size());
  for (const auto value : values) {
    for (size_t at = content.find(value); at != std::string_view::npos; at = content.find(value, at + 1)) {
      const auto first = is_replaced.begin() + static_cast<ptrdiff_t>(at);
      const auto last = first + static_cast<ptrdiff_t>(value.size());
      if (std::find(first, last, true) != last) continue;
      std::fill(first, last, true);
      result.replace(at, value.size(), pairs_.at(std::string(value)));
    }
  }
  return result;
}

}  // namespace zymdb::collect
