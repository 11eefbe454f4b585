#include "documents/difference_json.h"

#include "documents/json_value.h"

namespace zymdb::documents {
namespace {

Json json_of(const Change& change) {
  Json json{{"change", name_of(change.kind)}, {"class", change.part_class}, {"place", change.place}};
  if (change.kind == ChangeKind::kMoved) json["former_place"] = change.former_place;
  json["description"] = change.description;
  if (change.kind == ChangeKind::kReplaced) json["former_description"] = change.former_description;
  if (change.fields.empty()) return json;
  Json& fields = json["fields"] = Json::array();
  for (const FieldChange& each : change.fields)
    fields.push_back({{"field", each.field.key}, {"before", json_of_value(each.before)}, {"after", json_of_value(each.after)}});
  return json;
}

std::string dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string to_json(const std::vector<Change>& changes) {
  Json json{{"format_version", kDifferenceFormatVersion}, {"changes", Json::array()}};
  for (const Change& change : changes) json["changes"].push_back(json_of(change));
  return dumped(json, 2) + "\n";
}

std::string to_json_lines(const Event& event) {
  const Json when{{"generation", event.generation}, {"time", time_text(event.time)}};
  const auto line = [&](const Json& rest) {
    Json json = when;
    json.update(rest);
    return dumped(json, -1) + "\n";
  };
  if (event.is_baseline) return line({{"change", "baseline"}, {"parts", event.changes.size()}});
  std::string lines;
  for (const Change& change : event.changes) lines += line(json_of(change));
  return lines;
}

std::string to_json_line(const Change& change) {
  return dumped(json_of(change), -1);
}

}  // namespace zymdb::documents
