#include "show/changes.h"

namespace zymdb::tool {
namespace {

using documents::Change;
using documents::ChangeKind;
using documents::Event;
using records::Attention;
using records::Cell;
using records::Kind;

constexpr records::FieldInfo kTime = {.key = "Time", .heading = "TIME", .meaning = "when it happened, UTC"};
constexpr records::FieldInfo kGeneration = {.key = "Generation",
                                            .heading = "GENERATION",
                                            .meaning = "the generation that it made",
                                            .kind = Kind::kNumber};
constexpr records::FieldInfo kChangeFields[] = {
    {.key = "Change", .heading = "CHANGE", .meaning = "added, removed, moved, replaced or changed"},
    {.key = "Class", .heading = "CLASS", .meaning = "what kind of part"},
    {.key = "Place", .heading = "PLACE", .meaning = "where"},
    {.key = "What", .heading = "WHAT", .meaning = "the part, or what changed of it", .kind = Kind::kLongText},
};

Attention attention_of(ChangeKind kind) {
  return kind == ChangeKind::kRemoved || kind == ChangeKind::kReplaced ? Attention::kWarning
                                                                       : Attention::kNone;
}

std::vector<Cell> row_of(const Change& change) {
  return {{std::string(name_of(change.kind)), attention_of(change.kind)},
          {change.part_class, Attention::kNone},
          {where(change), Attention::kNone},
          {what(change), Attention::kNone}};
}

void add_row(const Event& event, std::vector<Cell> rest, records::Sheet& sheet) {
  std::vector<Cell> row = {{documents::time_text(event.time), Attention::kNone},
                           {event.generation, Attention::kNone}};
  row.insert(row.end(), rest.begin(), rest.end());
  sheet.rows.push_back(std::move(row));
}

}  // namespace

records::Sheet sheet_of(const std::vector<Change>& changes) {
  records::Sheet sheet{{std::begin(kChangeFields), std::end(kChangeFields)}, {}};
  for (const Change& change : changes) sheet.rows.push_back(row_of(change));
  return sheet;
}

records::Sheet sheet_of(const std::vector<Event>& events) {
  records::Sheet sheet{{kTime, kGeneration}, {}};
  sheet.fields.insert(sheet.fields.end(), std::begin(kChangeFields), std::end(kChangeFields));
  for (const Event& event : events) {
    if (event.is_baseline) {
      const std::string parts = std::to_string(event.changes.size()) + " parts";
      add_row(event, {{"baseline"}, {}, {}, {parts}}, sheet);
      continue;
    }
    for (const Change& change : event.changes) add_row(event, row_of(change), sheet);
  }
  return sheet;
}

}  // namespace zymdb::tool
