// Where in a condition a TEXT column is compared: a bare word or number there is a text as it stands, and
// nothing at all is the empty text.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_TEXT_COMPARISONS_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_TEXT_COMPARISONS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "client/dialect/catalog.h"
#include "client/dialect/lexer.h"
#include "client/dialect/words.h"

namespace zymdb::client {

// Is shown a condition's tokens from the first to the last. A column or a value counts where it stands alone:
// what is reckoned with is no text.
class TextComparisons {
 public:
  // The tokens end with a kEnd.
  explicit TextComparisons(const std::vector<Token>& tokens) : tokens_(tokens) {}

  void see_column(size_t place, const Column& column) {
    if (column.is_text && (place == 0 || !is_reckoning(tokens_[place - 1]))) column_at_ = place;
  }
  void see_keyword(size_t place, const Keyword& keyword);
  void see_operator(size_t place);

  // Whether the value at the place is compared with the TEXT column on its left.
  bool awaits(size_t place) const { return value_at_ == place && !is_reckoning(tokens_[place + 1]); }

  // The word that the value at the place is compared with on its right; null for none.
  const Token* compared_with(size_t place) const {
    if (!is_comparison(tokens_[place + 1]) || (place != 0 && is_reckoning(tokens_[place - 1])))
      return nullptr;
    const Token& right = tokens_[place + 2];
    return right.kind == TokenKind::kWord && !is_reckoning(tokens_[place + 3]) ? &right : nullptr;
  }

  // Whether the operator at the place compares a TEXT column with nothing.
  bool lacks_value(size_t place) const {
    return value_at_ == place + 1 && column_at_ + 1 == place && is_end(tokens_[place + 1]);
  }

 private:
  static constexpr size_t kNowhere = SIZE_MAX / 2;

  static bool is_comparison(const Token& token) {
    const char first = token.kind == TokenKind::kOperator ? token.text[0] : 0;
    if (first != '<' && first != '>') return first == '=' || (first == '!' && token.text.size() == 2);
    return token.text.size() == 1 || token.text[1] == '=' || token.text == "<>";
  }
  static bool is_reckoning(const Token& token) {
    return token.kind == TokenKind::kOperator && !token.is('(') && !token.is(')') && !token.is(',') &&
           !is_comparison(token);
  }
  static bool is_end(const Token& token);

  const std::vector<Token>& tokens_;
  size_t column_at_ = kNowhere;  // a TEXT column, or the NOT behind it
  size_t value_at_ = kNowhere;   // what is compared with it
  size_t between_at_ = kNowhere;
  size_t list_at_ = kNowhere;  // the parenthesis of a list of such values
  unsigned depth_ = 0;
  uint64_t lists_ = 0;  // a bit for each depth whose parenthesis holds such a list
};

}  // namespace zymdb::client

#endif
