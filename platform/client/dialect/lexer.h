// Cuts filter and statement text into the tokens of the filter dialect.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_LEXER_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_LEXER_H

#include <array>
#include <cstdint>
#include <string_view>

namespace zymdb::client {

// A table, because every character of every name is looked at.
inline constexpr auto kWordCharacters = [] {
  std::array<bool, 256> table{};
  for (size_t c = 0; c < table.size(); ++c)
    table[c] =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c >= 0x80;
  return table;
}();

constexpr bool is_word_character(char c) {
  return kWordCharacters[static_cast<unsigned char>(c)];
}

enum class TokenKind : uint8_t {
  kWord,         // letters, digits, "_" and bytes from 0x80 on that form no number
  kInteger,      // decimal without a leading zero, or hexadecimal after "0x"; fits 64 bits
  kReal,         // decimal with a fraction, without an exponent
  kText,         // between single or double quotes; text is what stands between them
  kOperator,     // one of the operators and punctuation marks of the dialect
  kPlaceholder,  // "?"
  kEnd,
  kInvalid,  // text is the reason
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  char quote = 0;         // of a text that holds this quote doubled; 0 when it can be used as it stands
  std::string_view text;  // a part of the input, but of an invalid token
  union {
    int64_t integer = 0;
    double real;
  };

  bool is(char punctuation) const {
    return kind == TokenKind::kOperator && text.size() == 1 && text[0] == punctuation;
  }
};

class Lexer {
 public:
  explicit Lexer(std::string_view input) : rest_(input) {}

  // The next token; kEnd at the end of the input. A comment, an unknown character, an unterminated text, and
  // anything after a closing ";" are invalid.
  Token next();

 private:
  Token text_token();
  Token run_token();
  Token operator_token();
  Token last_token();
  void take(size_t length) { rest_.remove_prefix(length); }

  std::string_view rest_;
};

}  // namespace zymdb::client

#endif
