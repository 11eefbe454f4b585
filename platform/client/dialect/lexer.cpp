#include "client/dialect/lexer.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace zymdb::client {
namespace {

constexpr std::array<std::string_view, 8> kLongOperators = {"||", "<<", ">>", "<=", ">=", "<>", "!=", "=="};
constexpr std::string_view kShortOperators = "=<>+-*/%&|~(),";

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_space(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
// The second character of a long operator.
constexpr bool ends_operator(char c) {
  return c == '|' || (c >= '<' && c <= '>');
}

Token make(TokenKind kind, std::string_view text) {
  Token token;
  token.kind = kind;
  token.text = text;
  return token;
}

Token invalid(std::string_view reason) {
  return make(TokenKind::kInvalid, reason);
}

bool read_hexadecimal(std::string_view digits, int64_t& value) {
  uint64_t bits = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), bits, 16);
  value = static_cast<int64_t>(bits);
  return error == std::errc() && end == digits.data() + digits.size() && digits.size() <= 16;
}

bool read_decimal(std::string_view digits, int64_t& value) {
  if (digits.size() > 1 && digits[0] == '0') return false;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 10);
  return error == std::errc() && end == digits.data() + digits.size();
}

bool read_integer(std::string_view run, int64_t& value) {
  if (run.size() > 2 && run[0] == '0' && (run[1] | 0x20) == 'x')
    return read_hexadecimal(run.substr(2), value);
  return read_decimal(run, value);
}

template <bool (*kBelongs)(char)>
size_t run_length(std::string_view input) {
  return static_cast<size_t>(
      std::find_if_not(input.begin(), input.end(), [](char c) { return kBelongs(c); }) - input.begin());
}

}  // namespace

Token Lexer::next() {
  take(run_length<is_space>(rest_));
  if (rest_.empty()) return {};
  const char c = rest_[0];
  if (is_word_character(c)) return run_token();
  if (c == '"' || c == '\'') return text_token();
  if (c == ';') return last_token();
  if (c == '?') {
    const Token token = make(TokenKind::kPlaceholder, rest_.substr(0, 1));
    take(1);
    return token;
  }
  return operator_token();
}

// A quote inside a text is written twice.
Token Lexer::text_token() {
  const char quote = rest_[0];
  Token token;
  token.kind = TokenKind::kText;
  for (size_t end = 1; (end = rest_.find(quote, end)) != rest_.npos; end += 2) {
    if (end + 1 < rest_.size() && rest_[end + 1] == quote) {
      token.quote = quote;
      continue;
    }
    token.text = rest_.substr(1, end - 1);
    take(end + 1);
    return token;
  }
  return invalid("a quote is not closed");
}

Token Lexer::run_token() {
  const std::string_view run = rest_.substr(0, run_length<is_word_character>(rest_));
  Token token = make(TokenKind::kWord, run);
  if (is_digit(run[0]) && read_integer(run, token.integer)) {
    token.kind = TokenKind::kInteger;
    const std::string_view after = rest_.substr(run.size());
    const bool fraction = after.size() > 1 && after[0] == '.' && is_digit(after[1]) &&
                          run.find_first_not_of("0123456789") == run.npos;
    if (fraction) {
      token.text = rest_.substr(0, run.size() + 1 + run_length<is_word_character>(after.substr(1)));
      const auto [end, error] = std::from_chars(token.text.data(), token.text.data() + token.text.size(),
                                                token.real, std::chars_format::fixed);
      if (error != std::errc() || end != token.text.data() + token.text.size())
        return invalid("a malformed number");
      token.kind = TokenKind::kReal;
    }
  }
  take(token.text.size());
  return token;
}

Token Lexer::operator_token() {
  if (rest_.starts_with("--") || rest_.starts_with("/*")) return invalid("a comment");
  if (rest_.size() > 1 && ends_operator(rest_[1])) {
    for (const std::string_view name : kLongOperators) {
      if (name[0] != rest_[0] || name[1] != rest_[1]) continue;
      take(name.size());
      return make(TokenKind::kOperator, name);
    }
  }
  if (kShortOperators.find(rest_[0]) == kShortOperators.npos) return invalid("an unexpected character");
  const Token token = make(TokenKind::kOperator, rest_.substr(0, 1));
  take(1);
  return token;
}

// A statement may end in ";", but one call is one statement.
Token Lexer::last_token() {
  take(1);
  take(run_length<is_space>(rest_));
  return rest_.empty() ? Token{} : invalid("text after the statement");
}

}  // namespace zymdb::client
