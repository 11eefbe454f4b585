// Values compared with each other and with what somebody writes: as listings are sorted and searched, and as
// a server is checked.
#ifndef ZYMDB_RECORDS_CONDITION_H
#define ZYMDB_RECORDS_CONDITION_H

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "records/record.h"

namespace zymdb::records {

enum class Relation : uint8_t { kEqual, kUnequal, kLess, kAtMost, kMore, kAtLeast };

struct Condition {
  Relation relation = Relation::kEqual;
  std::string value;  // empty: not known
};

// "=", "!=", "<", "<=", ">", ">=".
std::string_view sign_of(Relation relation);

// Takes the sign from the text's beginning; nothing where there is none.
std::optional<Relation> take_relation(std::string_view& text);

// A number in decimal or with "0x", and nothing else.
bool is_number(std::string_view text);

// Whether such a value can be compared so: a number with numbers only, and what is not known is neither more
// nor less than anything.
bool is_comparable(const FieldInfo& field, const Condition& condition);

// Numbers are compared as numbers and texts, in any case, as natural_order() does; texts are equal when all
// of their characters are. A value that is not known is unequal to all others.
bool holds(const FieldInfo& field, const Value& value, const Condition& condition);

// The order of two values that are known.
std::weak_ordering order_of(const FieldInfo& field, const Value& a, const Value& b);

}  // namespace zymdb::records

#endif
