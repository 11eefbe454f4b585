#include "records/arrangement.h"

#include <algorithm>

namespace zymdb::records {
namespace {

using Row = std::vector<Cell>;

bool meets(const RecordType& type, const Row& row, const std::vector<FieldCondition>& conditions) {
  return std::ranges::all_of(conditions, [&](const FieldCondition& each) {
    return holds(type.fields[each.field], row[each.field].value, each.condition);
  });
}

bool comes_before(const RecordType& type, const Row& a, const Row& b, const std::vector<SortKey>& order) {
  for (const auto& [field, is_descending] : order) {
    const Value &value_a = a[field].value, &value_b = b[field].value;
    if (is_known(value_a) != is_known(value_b)) return is_known(value_a);
    if (!is_known(value_a)) continue;
    const auto each = order_of(type.fields[field], value_a, value_b);
    if (each != 0) return is_descending ? each > 0 : each < 0;
  }
  return false;
}

Sheet columns_of(const Sheet& whole, const Selection& columns) {
  Sheet sheet;
  for (const size_t index : columns) sheet.fields.push_back(whole.fields[index]);
  for (const Row& row : whole.rows) {
    Row& chosen = sheet.rows.emplace_back();
    for (const size_t index : columns) chosen.push_back(row[index]);
  }
  return sheet;
}

}  // namespace

Sheet list_arranged(const RecordType& type, const Arrangement& arrangement, const Selection& columns) {
  if (arrangement.is_empty()) return type.list(columns);
  Sheet whole = type.list(all_fields(type));
  std::erase_if(whole.rows, [&](const Row& row) { return !meets(type, row, arrangement.conditions); });
  std::ranges::stable_sort(
      whole.rows, [&](const Row& a, const Row& b) { return comes_before(type, a, b, arrangement.order); });
  return columns_of(whole, columns);
}

}  // namespace zymdb::records
