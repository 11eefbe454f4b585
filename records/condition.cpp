#include "records/condition.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "common/text.h"

namespace zymdb::records {
namespace {

constexpr std::array<std::string_view, 6> kSigns = {"=", "!=", "<", "<=", ">", ">="};

struct Number {
  bool is_negative = false;
  uint64_t magnitude = 0;

  std::strong_ordering operator<=>(const Number& other) const {
    if (is_negative != other.is_negative) return other.is_negative <=> is_negative;
    return is_negative ? other.magnitude <=> magnitude : magnitude <=> other.magnitude;
  }
};

std::optional<Number> parse(std::string_view text) {
  Number number;
  const bool is_hex = text.starts_with("0x") || text.starts_with("0X");
  number.is_negative = text.starts_with('-');
  text.remove_prefix(is_hex ? 2 : number.is_negative ? 1 : 0);
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number.magnitude, is_hex ? 16 : 10);
  if (error != std::errc() || rest != end) return std::nullopt;
  if (number.magnitude == 0) number.is_negative = false;
  return number;
}

// Identifiers of more than 53 bits are texts in documents, and numbers all the same.
std::optional<Number> number_in(const FieldInfo& field, const Value& value) {
  if (const auto* const number = std::get_if<uint64_t>(&value)) return Number{false, *number};
  if (const auto* const number = std::get_if<int64_t>(&value)) return parse(std::to_string(*number));
  const auto* const text = std::get_if<std::string>(&value);
  return text != nullptr && field.kind == Kind::kNumber ? parse(*text) : std::nullopt;
}

bool fits(Relation relation, std::weak_ordering order) {
  switch (relation) {
    case Relation::kEqual:
      return order == 0;
    case Relation::kUnequal:
      return order != 0;
    case Relation::kLess:
      return order < 0;
    case Relation::kAtMost:
      return order <= 0;
    case Relation::kMore:
      return order > 0;
    case Relation::kAtLeast:
      return order >= 0;
  }
  return false;
}

bool asks_for_equality(Relation relation) {
  return relation == Relation::kEqual || relation == Relation::kUnequal;
}

}  // namespace

std::string_view sign_of(Relation relation) {
  return kSigns[static_cast<size_t>(relation)];
}

std::optional<Relation> take_relation(std::string_view& text) {
  std::optional<Relation> found;
  for (size_t i = 0; i < kSigns.size(); ++i) {
    const bool is_longer = !found || kSigns[i].size() > sign_of(*found).size();
    if (text.starts_with(kSigns[i]) && is_longer) found = static_cast<Relation>(i);
  }
  if (found) text.remove_prefix(sign_of(*found).size());
  return found;
}

bool is_number(std::string_view text) {
  return parse(text).has_value();
}

bool is_comparable(const FieldInfo& field, const Condition& condition) {
  if (condition.value.empty()) return asks_for_equality(condition.relation);
  return field.kind != Kind::kNumber || is_number(condition.value);
}

std::weak_ordering order_of(const FieldInfo& field, const Value& a, const Value& b) {
  const auto number_a = number_in(field, a), number_b = number_in(field, b);
  if (number_a && number_b) return *number_a <=> *number_b;
  return natural_order(text_of(field, a), text_of(field, b));
}

bool holds(const FieldInfo& field, const Value& value, const Condition& condition) {
  const auto& [relation, wanted] = condition;
  if (!is_known(value) || wanted.empty()) {
    const bool is_same = !is_known(value) && wanted.empty();
    return asks_for_equality(relation) && is_same == (relation == Relation::kEqual);
  }
  const auto number = number_in(field, value), wanted_number = parse(wanted);
  if (number && wanted_number) return fits(relation, *number <=> *wanted_number);
  const std::string text = valid_utf8(text_of(field, value));
  if (asks_for_equality(relation))
    return (lower_case(text) == lower_case(wanted)) == (relation == Relation::kEqual);
  return fits(relation, natural_order(text, wanted));
}

}  // namespace zymdb::records
