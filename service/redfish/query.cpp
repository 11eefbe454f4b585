#include "service/redfish/query.h"

#include <algorithm>
#include <charconv>
#include <set>

#include "service/redfish/model/features.h"

namespace zymdb::service::redfish {
namespace {

constexpr size_t kLargestExpansion = size_t{2} << 20;
constexpr size_t kMostSelected = 64;

std::optional<uint64_t> number_of(std::string_view text) {
  uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_whole = error == std::errc() && end == text.data() + text.size();
  return is_whole && !text.empty() ? std::optional(number) : std::nullopt;
}

QueryError malformed(const std::string& name, const std::string& value) {
  return {400, {"QueryParameterValueFormatError", {value, name}}};
}

// ".", "*($levels=2)".
bool parse_expand(std::string_view value, Query& query) {
  if (value.empty()) return false;
  switch (value.front()) {
    case '.':
      query.expand = Expansion::kNoLinks;
      break;
    case '~':
      query.expand = Expansion::kLinks;
      break;
    case '*':
      query.expand = Expansion::kAll;
      break;
    default:
      return false;
  }
  value.remove_prefix(1);
  if (value.empty()) return true;
  constexpr std::string_view kLevels = "($levels=";
  if (!value.starts_with(kLevels) || !value.ends_with(')')) return false;
  value.remove_prefix(kLevels.size());
  value.remove_suffix(1);
  const auto levels = number_of(value);
  if (!levels || *levels == 0) return false;
  query.levels = static_cast<unsigned>(std::min<uint64_t>(*levels, kMostLevels + 1));
  return true;
}

bool is_property(std::string_view name) {
  const auto is_one_of_it = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("@._#/").find(c) != std::string_view::npos;
  };
  return !name.empty() && name.front() != '/' && name.back() != '/' &&
         name.find("//") == std::string_view::npos && std::ranges::all_of(name, is_one_of_it);
}

bool parse_select(std::string_view value, Query& query) {
  while (true) {
    const size_t comma = value.find(',');
    const std::string_view name = value.substr(0, comma);
    if (!is_property(name) || query.select.size() == kMostSelected) return false;
    query.select.emplace_back(name);
    if (comma == std::string_view::npos) return true;
    value.remove_prefix(comma + 1);
  }
}

bool parse_number(std::string_view value, std::optional<uint64_t>& number) {
  number = number_of(value);
  return number.has_value();
}

std::optional<QueryError> parse_option(const std::string& name, const std::string& value, Query& query) {
  if (name == "$expand") {
    if (!parse_expand(value, query)) return malformed(name, value);
    if (query.levels > kMostLevels)
      return QueryError{400,
                        {"QueryParameterOutOfRange", {value, name, "1 to " + std::to_string(kMostLevels)}}};
    return {};
  }
  bool is_right = true;
  if (name == "$select")
    is_right = parse_select(value, query);
  else if (name == "$top")
    is_right = parse_number(value, query.top);
  else if (name == "$skip")
    is_right = parse_number(value, query.skip);
  else if (name == "only")
    is_right = query.only = value.empty();
  else if (name.starts_with('$'))
    return QueryError{501, {"QueryParameterUnsupported", {name}}};
  return is_right ? std::nullopt : std::optional(malformed(name, value));
}

// The link's path; empty of what is no link.
std::string path_of_link(const Json& value) {
  if (!value.is_object() || value.size() != 1) return "";
  const auto path = value.find("@odata.id");
  return path != value.end() && path->is_string() ? path->get<std::string>() : "";
}

bool is_annotation(const std::string& key) {
  return key.find('@') != std::string::npos;
}

void copy_property(const Json& from, Json& to, std::string_view property) {
  const size_t slash = property.find('/');
  const std::string name(property.substr(0, slash));
  if (!from.is_object() || !from.contains(name)) return;
  if (slash == std::string_view::npos) {
    to[name] = from[name];
    return;
  }
  Json& member = to[name];
  if (member.is_null()) member = Json::object();
  copy_property(from[name], member, property.substr(slash + 1));
}

constexpr const char* kAlwaysThere[] = {"@odata.type", "@odata.id",           "@odata.context",
                                        "@odata.etag", "Members@odata.count", "Members@odata.nextLink"};

Json selected_of(const Json& resource, const std::vector<std::string>& properties) {
  if (!path_of_link(resource).empty()) return resource;
  Json chosen = Json::object();
  for (const char* const name : kAlwaysThere) {
    if (resource.contains(name)) chosen[name] = resource[name];
  }
  for (const std::string& property : properties) copy_property(resource, chosen, property);
  return chosen;
}

}  // namespace

std::string Query::key() const {
  std::string key;
  if (expand != Expansion::kNone)
    key += "e" + std::to_string(static_cast<int>(expand)) + "," + std::to_string(levels);
  if (only) key += "o";
  if (top) key += "t" + std::to_string(*top);
  if (skip) key += "s" + std::to_string(*skip);
  for (const std::string& property : select) key += "," + property;
  return key;
}

std::optional<QueryError> parse_query(const Fields& fields, Query& query) {
  std::set<std::string> given;
  for (const auto& [name, value] : fields) {
    const bool is_option = name.starts_with('$') || name == "only";
    if (is_option && !given.insert(name).second) return QueryError{400, {"QueryCombinationInvalid"}};
    if (auto error = parse_option(name, value, query)) return error;
  }
  // A collection's one member is no page of it.
  if (query.only && (query.top || query.skip)) return QueryError{400, {"QueryCombinationInvalid"}};
  return {};
}

void take_page(Json& collection, const Query& query) {
  if (!query.top && !query.skip) return;
  const Json all = collection["Members"];
  const uint64_t begin = std::min<uint64_t>(query.skip.value_or(0), all.size());
  const uint64_t rest = all.size() - begin;
  const uint64_t count = std::min<uint64_t>(query.top.value_or(rest), rest);
  Json members = Json::array();
  for (uint64_t at = begin; at < begin + count; ++at) members.push_back(all[at]);
  collection["Members"] = std::move(members);
  // A page of nothing has no next one: it would be the same again.
  if (count == rest || count == 0) return;
  std::string next = collection["@odata.id"].get<std::string>() + "?$skip=" + std::to_string(begin + count) +
                     "&$top=" + std::to_string(count);
  if (query.expand != Expansion::kNone) {
    constexpr const char* kLetters[] = {"", ".", "~", "*"};
    next += std::string("&$expand=") + kLetters[static_cast<size_t>(query.expand)] +
            "($levels=" + std::to_string(query.levels) + ")";
  }
  for (size_t i = 0; i < query.select.size(); ++i) next += (i == 0 ? "&$select=" : ",") + query.select[i];
  collection["Members@odata.nextLink"] = next;
}

void Expander::expand(Json& resource, unsigned levels) {
  if (levels == 0) return;
  const auto path = resource.find("@odata.id");
  above_.push_back(path != resource.end() ? path->get<std::string>() : "");
  expand_within(resource, levels, false);
  above_.pop_back();
}

void Expander::expand_within(Json& value, unsigned levels, bool is_in_links) {
  const std::string path = path_of_link(value);
  if (!path.empty()) {
    const Expansion needed = is_in_links ? Expansion::kLinks : Expansion::kNoLinks;
    if (expansion_ == Expansion::kAll || expansion_ == needed) replace(value, path, levels);
    return;
  }
  if (value.is_array()) {
    for (Json& each : value) expand_within(each, levels, is_in_links);
  } else if (value.is_object()) {
    for (auto& [key, each] : value.items()) {
      if (!is_annotation(key)) expand_within(each, levels, is_in_links || key == "Links");
    }
  }
}

void Expander::replace(Json& link, const std::string& path, unsigned levels) {
  if (std::ranges::find(above_, path) != above_.end()) return;
  Json resource = find_(path);
  if (resource.is_null()) return;
  bytes_ += text_of(resource).size();
  if (bytes_ > kLargestExpansion) throw TooLarge();
  expand(resource, levels - 1);
  link = std::move(resource);
}

Json selected(const Json& resource, const Query& query) {
  if (query.select.empty()) return resource;
  const bool is_expanded_collection = resource.contains("Members") && query.expand != Expansion::kNone;
  if (!is_expanded_collection) return selected_of(resource, query.select);
  Json chosen = resource;
  for (Json& member : chosen["Members"]) member = selected_of(member, query.select);
  return chosen;
}

}  // namespace zymdb::service::redfish
