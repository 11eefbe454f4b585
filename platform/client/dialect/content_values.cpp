#include "client/dialect/content_values.h"

namespace zymdb::client {
namespace {

constexpr size_t kUsualColumns = 32;  // of a row of most tables

}  // namespace

void ContentValues::put_text(std::string_view column, std::string_view value) {
  Pair& pair = pair_of(column);
  pair.text.assign(value);
  pair.type = Argument::Type::kText;
}

void ContentValues::put_blob(std::string_view column, std::string_view value) {
  Pair& pair = pair_of(column);
  pair.text.assign(value);
  pair.type = Argument::Type::kBlob;
}

void ContentValues::put_integer(std::string_view column, int64_t value) {
  Pair& pair = pair_of(column);
  pair.integer = value;
  pair.type = Argument::Type::kInteger;
}

void ContentValues::put_null(std::string_view column) {
  pair_of(column).type = Argument::Type::kNull;
}

Argument ContentValues::value(size_t place) const {
  const Pair& pair = pairs_[place];
  switch (pair.type) {
    case Argument::Type::kText:
      return Argument::of(pair.text);
    case Argument::Type::kBlob: {
      Argument argument = Argument::of(pair.text);
      argument.type = Argument::Type::kBlob;
      return argument;
    }
    case Argument::Type::kInteger:
      return Argument::of(pair.integer);
    default:
      return {};
  }
}

ContentValues::Pair& ContentValues::pair_of(std::string_view column) {
  for (size_t i = 0; i < count_; ++i) {
    if (same_word(pairs_[i].column, column)) return pairs_[i];
  }
  if (pairs_.empty()) pairs_.reserve(kUsualColumns);
  if (count_ == pairs_.size()) pairs_.emplace_back();
  pairs_[count_].column.assign(column);
  pairs_[count_].type = Argument::Type::kNull;
  return pairs_[count_++];
}

}  // namespace zymdb::client
