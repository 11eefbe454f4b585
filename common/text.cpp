#include "common/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <iterator>

namespace zymdb {
namespace {

char lower_letter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Lower case. What firmware leaves in a text that nobody filled in.
constexpr std::string_view kPlaceholders[] = {
    "to be filled by o.e.m.",
    "to be filled by oem",
    "to be filled by o.e.m",
    "default string",
    "not specified",
    "not provided",
    "not available",
    "not applicable",
    "not present",
    "no dimm",
    "n/a",
    "na",
    "unknown",
    "none",
    "null",
    "undefined",
    "unspecified",
    "invalid",
    "empty",
    "oem",
    "o.e.m.",
    "<bad index>",
    "system serial number",
    "asset tag",
    "no asset tag",
    "part number",
    "serial number",
    "asset tag#",
    "0123456789",
    "123456789",
    "1234567890",
    "system manufacturer",
    "system product name",
    "system version",
    "base board serial number",
    "chassis serial number",
    "fill by oem",
    "filled by o.e.m.",
    "unknow",
};

// Lower case. UUIDs that firmware is delivered with.
constexpr std::string_view kPlaceholderUuids[] = {
    "03000200-0400-0500-0006-000700080009", "00020003-0004-0005-0006-000700080009",
    "12345678-1234-5678-90ab-cddeefaabbcc", "78563412-3412-7856-90ab-cddeefaabbcc",
    "4c4c4544-0000-2010-8020-80c04f202020",
};
constexpr std::string_view kUuidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

constexpr bool is_blank(char c) {
  return static_cast<unsigned char>(c) <= ' ' || c == '\x7f';
}

bool is_filler(char c) {
  return std::string_view(".-_*#?xX0 \xff").find(c) != std::string_view::npos;
}

bool is_placeholder(std::string_view text) {
  const std::string lower = lower_case(text);
  return std::ranges::find(kPlaceholders, lower) != std::end(kPlaceholders);
}

// Rows of one filler character: "........", "--", "0000". A single "0" or "X" may mean something.
bool is_filler_row(std::string_view text) {
  const bool one_character = text.find_first_not_of(text.front()) == std::string_view::npos;
  const bool punctuation = text.find_first_not_of(".-_*#? ") == std::string_view::npos;
  return punctuation || (one_character && is_filler(text.front()) && text.size() > 1);
}

// The length of the UTF-8 character that `text` starts with; 0 when it is none.
size_t utf8_length(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
  if (length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool overlong = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xF0 && byte(1) < 0x90);
  const bool surrogate = first == 0xED && byte(1) >= 0xA0;
  const bool beyond = first == 0xF4 && byte(1) >= 0x90;
  return overlong || surrogate || beyond ? 0 : length;
}

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const size_t length = utf8_length(text);
    const bool kept = length > 1 || (length == 1 && !(is_blank(text.front()) && text.front() != ' '));
    result.append(kept ? text.substr(0, length) : "?");
    text.remove_prefix(std::max<size_t>(length, 1));
  }
  return result;
}

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

bool is_hex_digit(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f');
}

// What texts are compared by: numbers, hexadecimal ones, and characters, in this order.
struct Token {
  enum Kind : uint8_t { kNumber, kHexNumber, kCharacter } kind;
  std::string_view text;  // of a number without zeros in front
};

std::string_view take_run(std::string_view& rest, bool (*belongs)(char)) {
  const auto end = std::ranges::find_if_not(rest, belongs);
  const auto run = rest.substr(0, static_cast<size_t>(end - rest.begin()));
  rest.remove_prefix(run.size());
  return run.substr(std::min(run.find_first_not_of('0'), run.size()));
}

// In lower case.
Token take_token(std::string_view& rest) {
  if (rest.size() > 2 && rest.starts_with("0x") && is_hex_digit(rest[2])) {
    rest.remove_prefix(2);
    return {Token::kHexNumber, take_run(rest, is_hex_digit)};
  }
  if (is_digit(rest.front())) return {Token::kNumber, take_run(rest, is_digit)};
  const Token character{Token::kCharacter, rest.substr(0, 1)};
  rest.remove_prefix(1);
  return character;
}

// Of numbers the longer one is greater: they may have more digits than any type has room for.
std::weak_ordering order_of(const Token& a, const Token& b) {
  if (const auto kinds = a.kind <=> b.kind; kinds != 0) return kinds;
  if (const auto sizes = a.text.size() <=> b.text.size(); sizes != 0) return sizes;
  return a.text <=> b.text;
}

bool has_uuid_form(std::string_view text) {
  const auto fits = [](char c, char form) {
    return form == '-' ? c == '-' : std::string_view("0123456789abcdef").find(c) != std::string_view::npos;
  };
  return text.size() == kUuidForm.size() && std::equal(text.begin(), text.end(), kUuidForm.begin(), fits);
}

// The same byte all over.
bool is_filler_uuid(std::string_view uuid) {
  std::string digits;
  std::ranges::copy_if(uuid, std::back_inserter(digits), [](char c) { return c != '-'; });
  for (size_t i = 2; i < digits.size(); ++i) {
    if (digits[i] != digits[i - 2]) return false;
  }
  return true;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
  return text;
}

std::string lower_case(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(), lower_letter);
  return result;
}

bool is_alike(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, lower_letter, lower_letter);
}

bool begins_alike(std::string_view text, std::string_view beginning) {
  return is_alike(text.substr(0, beginning.size()), beginning);
}

std::weak_ordering natural_order(std::string_view a, std::string_view b) {
  const std::string lower_a = lower_case(a), lower_b = lower_case(b);
  std::string_view rest_a = trimmed(lower_a), rest_b = trimmed(lower_b);
  while (!rest_a.empty() && !rest_b.empty()) {
    const Token token_a = take_token(rest_a), token_b = take_token(rest_b);
    if (const auto order = order_of(token_a, token_b); order != 0) return order;
  }
  return rest_b.empty() <=> rest_a.empty();
}

std::string valid_utf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const size_t length = utf8_length(text);
    result.append(length != 0 ? text.substr(0, length) : "\xEF\xBF\xBD");
    text.remove_prefix(std::max<size_t>(length, 1));
  }
  return result;
}

std::string hex_text(uint64_t number) {
  std::array<char, 16> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
  std::string result(digits.data(), end);
  std::ranges::transform(result, result.begin(),
                         [](char c) { return c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c; });
  return "0x" + result;
}

std::optional<uint64_t> leading_number(std::string_view text) {
  text = trimmed(text);
  const bool hex = text.starts_with("0x") || text.starts_with("0X");
  if (hex) text.remove_prefix(2);
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, hex ? 16 : 10);
  if (error != std::errc{} || end == text.data()) return std::nullopt;
  return number;
}

std::optional<uint32_t> hex_number(std::string_view digits) {
  uint32_t number = 0;
  const char* const last = digits.data() + digits.size();
  const auto [end, error] = std::from_chars(digits.data(), last, number, 16);
  if (digits.empty() || digits.size() > 8 || error != std::errc{} || end != last) return std::nullopt;
  return number;
}

std::string utc_text(int64_t seconds_since_1970) {
  const auto seconds = static_cast<std::time_t>(seconds_since_1970);
  std::tm parts{};
  std::array<char, 40> text{};
  if (gmtime_r(&seconds, &parts) != nullptr)
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return text.data();
}

std::string iso_text(int64_t seconds_since_1970) {
  std::string text = utc_text(seconds_since_1970);
  if (text.empty()) return {};
  text[text.find(' ')] = 'T';
  return text + "Z";
}

std::string listed(const std::vector<std::string>& words) {
  std::string text;
  for (const auto& word : words) {
    if (!word.empty()) text += (text.empty() ? "" : ", ") + word;
  }
  return text;
}

std::string_view cut(std::string_view text, size_t size) {
  if (text.size() <= size) return text;
  while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return text.substr(0, size);
}

std::optional<std::string> known_uuid(std::string_view text) {
  const std::string uuid = lower_case(trimmed(text));
  const bool is_placeholder = std::ranges::find(kPlaceholderUuids, uuid) != std::end(kPlaceholderUuids);
  return !has_uuid_form(uuid) || is_filler_uuid(uuid) || is_placeholder ? std::nullopt : std::optional(uuid);
}

std::optional<std::string> known_text(std::string_view text) {
  text = trimmed(text.substr(0, text.find('\0')));
  if (text.empty() || is_placeholder(text) || is_filler_row(text)) return std::nullopt;
  return printable(text);
}

}  // namespace zymdb
