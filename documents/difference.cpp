#include "documents/difference.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>

namespace zymdb::documents {
namespace {

using records::Role;

constexpr std::array<const char*, 5> kKindNames = {"added", "removed", "moved", "replaced", "changed"};

bool counts(const FieldInfo& field, const DifferenceOptions& options) {
  switch (field.role) {
    case Role::kRow:
      return false;
    case Role::kVolatile:
      return options.with_volatile;
    case Role::kIdentity:
      return options.by != MatchBy::kPlace;
    default:
      return true;
  }
}

std::vector<FieldChange> changed_fields(const PartClass& of, const Pair& pair, const DifferenceOptions& options) {
  std::vector<FieldChange> changes;
  for (size_t i = 0; i < of.fields.size(); ++i) {
    const Value &before = (*pair.before)[i], &after = (*pair.after)[i];
    if (before != after && counts(of.fields[i], options)) changes.push_back({of.fields[i], before, after});
  }
  return changes;
}

// Whether one of the fields tells two parts apart. What nobody knew before says nothing.
bool tells_apart(const FieldChange& change) {
  const bool is_decisive = change.field.role == Role::kIdentity || change.field.role == Role::kModel;
  return is_decisive && !change.field.is_derived && records::is_known(change.before) && records::is_known(change.after);
}

bool have_same_identity(const PartClass& of, const Pair& pair) {
  for (size_t i = 0; i < of.fields.size(); ++i) {
    const Value &before = (*pair.before)[i], &after = (*pair.after)[i];
    if (of.fields[i].role == Role::kIdentity && records::is_known(before) && before == after) return true;
  }
  return false;
}

ChangeKind kind_of(const PartClass& of, const Pair& pair, const Change& change, const DifferenceOptions& options) {
  const bool is_same = options.by == MatchBy::kIdentity && have_same_identity(of, pair);
  if (!is_same && std::ranges::any_of(change.fields, tells_apart)) return ChangeKind::kReplaced;
  return change.former_place != change.place ? ChangeKind::kMoved : ChangeKind::kChanged;
}

Change whole(ChangeKind kind, const PartClass& of, const Part& part) {
  return {.kind = kind, .part_class = of.name, .place = of.place(part), .former_place = {},
          .description = of.description(part), .former_description = {}, .fields = {}, .before = {}, .after = {}};
}

Change change_of(const PartClass& of, const Pair& pair, const DifferenceOptions& options) {
  if (pair.before == nullptr) {
    Change added = whole(ChangeKind::kAdded, of, *pair.after);
    added.after = *pair.after;
    return added;
  }
  if (pair.after == nullptr) {
    Change removed = whole(ChangeKind::kRemoved, of, *pair.before);
    removed.before = *pair.before;
    return removed;
  }
  Change change = whole(ChangeKind::kChanged, of, *pair.after);
  change.former_place = of.place(*pair.before);
  change.former_description = of.description(*pair.before);
  change.fields = changed_fields(of, pair, options);
  change.before = *pair.before;
  change.after = *pair.after;
  change.kind = kind_of(of, pair, change, options);
  return change;
}

// The order of the former document, and what is new in that of the later one.
void sort_pairs(const PartClass& before, const PartClass& after, std::vector<Pair>& pairs) {
  std::unordered_map<const Part*, size_t> order;
  for (const Part& part : before.parts) order.emplace(&part, order.size());
  for (const Part& part : after.parts) order.emplace(&part, order.size());
  std::ranges::sort(pairs, {}, [&](const Pair& pair) { return order.at(pair.before != nullptr ? pair.before : pair.after); });
}

void add_changes(const PartClass& before, const PartClass& after, const DifferenceOptions& options,
                 std::vector<Change>& changes) {
  auto pairs = match(before, after, options.by);
  sort_pairs(before, after, pairs);
  for (const Pair& pair : pairs) {
    Change change = change_of(before, pair, options);
    const bool is_whole = pair.before == nullptr || pair.after == nullptr;
    if (is_whole || !change.fields.empty()) changes.push_back(std::move(change));
  }
}

// A table's columns say it; where none of them changed, the others do.
std::string field_texts(const std::vector<FieldChange>& fields) {
  const auto is_shown = [](const FieldChange& each) { return each.field.shown == records::Shown::kByDefault; };
  const bool any_shown = std::ranges::any_of(fields, is_shown);
  std::string text;
  for (const FieldChange& each : fields) {
    if (any_shown && !is_shown(each)) continue;
    const auto side = [&](const Value& value) {
      const std::string shown = records::text_of(each.field, value);
      return shown.empty() ? std::string("?") : shown;
    };
    text += (text.empty() ? "" : ", ") + std::string(each.field.heading) + " " + side(each.before) + " -> " + side(each.after);
  }
  return text;
}

}  // namespace

const char* name_of(ChangeKind kind) {
  return kKindNames[static_cast<size_t>(kind)];
}

std::vector<Change> difference(const Document& before, const Document& after, const DifferenceOptions& options) {
  std::vector<Change> changes;
  for (const PartClass& of : before.classes) {
    const PartClass* const other = after.find(of.name);
    if (other != nullptr) add_changes(of, *other, options, changes);
  }
  return changes;
}

std::string where(const Change& change) {
  return change.kind == ChangeKind::kMoved ? change.former_place + " -> " + change.place : change.place;
}

std::string what(const Change& change) {
  switch (change.kind) {
    case ChangeKind::kReplaced:
      return change.former_description + " -> " + change.description;
    case ChangeKind::kChanged:
      return field_texts(change.fields);
    default:
      return change.description;
  }
}

std::string text_of(const Change& change) {
  std::string line = name_of(change.kind);
  for (const std::string& part : {change.part_class, where(change), what(change)}) {
    if (!part.empty()) line += "  " + part;
  }
  return line;
}

}  // namespace zymdb::documents
