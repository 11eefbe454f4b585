#include "client/dialect/text_comparisons.h"

namespace zymdb::client {

void TextComparisons::see_keyword(size_t place, const Keyword& keyword) {
  const bool follows_column = column_at_ + 1 == place;
  switch (keyword.link) {
    case Link::kNot:
      if (follows_column) column_at_ = place;
      if (value_at_ == place) value_at_ = place + 1;
      break;
    case Link::kCompares:
      if (follows_column) value_at_ = place + 1;
      break;
    case Link::kBetween:
      if (follows_column) value_at_ = between_at_ = place + 1;
      break;
    case Link::kAnd:
      if (between_at_ + 1 == place) value_at_ = place + 1;
      break;
    case Link::kIn:
      if (follows_column) list_at_ = place + 1;
      break;
    case Link::kSelect:
      lists_ &= ~(uint64_t{1} << depth_);
      break;
    case Link::kNone:
    case Link::kOr:
      break;
  }
}

void TextComparisons::see_operator(size_t place) {
  const Token& token = tokens_[place];
  if (token.is('(')) {
    const uint64_t bit = uint64_t{1} << ++depth_;
    lists_ = list_at_ == place ? lists_ | bit : lists_ & ~bit;
    if (list_at_ == place) value_at_ = place + 1;
  } else if (token.is(')')) {
    --depth_;
  } else if (token.is(',')) {
    if ((lists_ >> depth_ & 1) != 0) value_at_ = place + 1;
  } else if (column_at_ + 1 == place && is_comparison(token)) {
    value_at_ = place + 1;
  }
}

bool TextComparisons::is_end(const Token& token) {
  if (token.kind == TokenKind::kEnd || token.is(')')) return true;
  const Keyword* const keyword = token.kind == TokenKind::kWord ? find_keyword(token.text) : nullptr;
  if (keyword == nullptr) return false;
  return keyword->link == Link::kAnd || keyword->link == Link::kOr || keyword->turn == Turn::kGroup ||
         keyword->turn == Turn::kTail;
}

}  // namespace zymdb::client
