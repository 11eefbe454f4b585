#include "documents/draft.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>

#include "common/text.h"
#include "documents/check.h"

namespace zymdb::documents {
namespace {

using records::Role;

// What is drafted of a class otherwise than by its places.
enum class Manner : uint8_t { kByPlace, kEveryPart, kLinks, kNone };
struct ClassManner {
  std::string_view name;
  Manner manner;
};
constexpr ClassManner kManners[] = {
    {"system", Manner::kEveryPart},  // its place is the host's name
    {"functions", Manner::kLinks},   // adapters say what is plugged in
    {"settings", Manner::kNone},     // which are wishes, not parts
};

Manner manner_of(const PartClass& of) {
  const auto found = std::ranges::find(kManners, of.name, &ClassManner::name);
  return found == std::end(kManners) ? Manner::kByPlace : found->manner;
}

// A text in quotes, as TOML takes it.
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : valid_utf8(text)) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(c));
      result += escape;
      continue;
    }
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + "\"";
}

// What is equal to the value; a sign at its beginning belongs to it.
std::string equal_to(const FieldInfo& field, const Value& value) {
  const std::string text = records::text_of(field, value);
  std::string_view rest = text;
  if (records::take_relation(rest)) return quoted("= " + text);
  const bool is_integer = field.kind == records::Kind::kNumber && field.hex_digits == 0;
  return is_integer ? text : quoted(text);
}

std::string joined(const std::vector<std::string>& texts, std::string_view before, std::string_view after) {
  return texts.empty() ? "{}" : std::string(before) + listed(texts) + std::string(after);
}

bool is_drafted_model(const FieldInfo& field) {
  return field.role == Role::kModel && field.shown == records::Shown::kByDefault;
}

// The model as tables show it, and the firmware that is to be no older.
std::string conditions_of(const PartClass& of, const Part& part) {
  std::vector<std::string> conditions;
  for (size_t i = 0; i < part.size(); ++i) {
    const FieldInfo& field = of.fields[i];
    if (!records::is_known(part[i])) continue;
    if (is_drafted_model(field)) conditions.push_back(field.key + (" = " + equal_to(field, part[i])));
    if (field.role == Role::kVersion)
      conditions.push_back(field.key + (" = " + quoted(">= " + records::text_of(field, part[i]))));
  }
  return joined(conditions, "{ ", " }");
}

bool has_conditions(const PartClass& of) {
  return std::ranges::any_of(of.fields, [](const FieldInfo& field) {
    return is_drafted_model(field) || field.role == Role::kVersion;
  });
}

size_t count_at(const PartClass& of, const std::vector<const Part*>& parts, std::string_view place) {
  return static_cast<size_t>(
      std::ranges::count_if(parts, [&](const Part* part) { return is_at(of, *part, place); }));
}

// Of a name that tells the version there is another one after an update.
bool tells_version(const PartClass& of, const Part& part, std::string_view name) {
  for (size_t i = 0; i < part.size(); ++i) {
    const std::string version = records::text_of(of.fields[i], part[i]);
    if (of.fields[i].role == Role::kVersion && !version.empty() &&
        name.find(version) != std::string_view::npos)
      return true;
  }
  return false;
}

// The first name that no other part's place has; else all of the place.
std::string place_name_of(const PartClass& of, const std::vector<const Part*>& parts, const Part& part) {
  for (size_t i = 0; i < part.size(); ++i) {
    const FieldInfo& field = of.fields[i];
    const bool is_name = field.role == Role::kPlace && field.shown == records::Shown::kByDefault &&
                         field.kind != records::Kind::kNumber && records::is_known(part[i]);
    if (!is_name) continue;
    const std::string name = records::text_of(field, part[i]);
    if (!tells_version(of, part, name) && count_at(of, parts, name) == 1) return name;
  }
  return of.place(part);
}

// The parts of a class by their places, the places in the order of the parts.
struct Place {
  std::string name;
  std::vector<std::string> parts;  // their conditions
};

std::vector<Place> places_of(const PartClass& of, const std::vector<const Part*>& parts) {
  std::vector<Place> places;
  for (const Part* const part : parts) {
    const std::string name = place_name_of(of, parts, *part);
    if (name.empty()) continue;
    auto found =
        std::ranges::find(places, lower_case(name), [](const Place& each) { return lower_case(each.name); });
    if (found == places.end()) found = places.insert(found, {name, {}});
    found->parts.push_back(conditions_of(of, *part));
  }
  return places;
}

std::string lines_of(const Place& place) {
  if (place.parts.size() == 1) return quoted(place.name) + " = " + place.parts.front() + "\n";
  std::string lines = quoted(place.name) + " = [\n";
  for (const std::string& part : place.parts) lines += "  " + part + ",\n";
  return lines + "]\n";
}

// The demand, but for what does not meet it.
std::string demand(const PartClass& of, std::string_view key, Aspect aspect) {
  const Document document{{}, {of}};
  const auto verdicts = check({{aspect, of.name}}, document);
  std::vector<std::string> exceptions;
  std::set<std::string> known;
  for (const Failure& failure : verdicts.front().failures) {
    const std::string& name = aspect == Aspect::kUnique ? failure.identity : failure.place;
    if (known.insert(name).second) exceptions.push_back(quoted(name));
  }
  const std::string value = exceptions.empty() ? "true" : "{ except = " + joined(exceptions, "[", "]") + " }";
  return std::string(key) + " = " + value + "\n";
}

bool has(const PartClass& of, auto predicate) {
  return std::ranges::any_of(of.fields, predicate);
}

std::string demands_of(const PartClass& of) {
  std::string lines;
  if (has(of, [](const FieldInfo& field) { return field.judge != nullptr; }))
    lines += demand(of, "healthy", Aspect::kHealthy);
  if (has(of, [](const FieldInfo& field) { return field.role == Role::kIdentity; }))
    lines += demand(of, "unique", Aspect::kUnique);
  return lines;
}

std::string by_place(const PartClass& of, const std::vector<const Part*>& parts) {
  std::string text = "count = " + std::to_string(parts.size()) + "\n" + demands_of(of);
  if (!has_conditions(of)) return text;
  text += "\n[" + of.name + ".at]\n";
  for (const Place& place : places_of(of, parts)) text += lines_of(place);
  return text;
}

std::string table_of(const PartClass& of) {
  const auto parts = of.present();
  if (parts.empty()) return {};
  const std::string heading = "\n[" + of.name + "]\n";
  switch (manner_of(of)) {
    case Manner::kByPlace:
      return heading + by_place(of, parts);
    case Manner::kEveryPart:
      return heading + "all = " + conditions_of(of, *parts.front()) + "\n";
    case Manner::kLinks:
      return heading + demand(of, "full_links", Aspect::kFullLinks);
    case Manner::kNone:
      break;
  }
  return {};
}

std::string machine_of(const Document& document) {
  const PartClass* const systems = document.find("system");
  std::string name =
      systems == nullptr || systems->parts.empty() ? "" : systems->model(systems->parts.front());
  std::ranges::replace_if(
      name, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return name.empty() ? "a server" : valid_utf8(name);
}

}  // namespace

std::string draft(const Document& document) {
  std::string text = "# What a server should be: drafted from " + machine_of(document) +
                     " by zymdb " ZYMDB_VERSION
                     ".\n# `zymdb check --against FILE` tells where one is otherwise.\nformat_version = " +
                     std::to_string(kExpectationsFormatVersion) + "\n";
  for (const PartClass& of : document.classes) text += table_of(of);
  return text;
}

}  // namespace zymdb::documents
