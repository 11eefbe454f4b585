#include "documents/part_names.h"

#include <functional>
#include <map>
#include <set>

#include "documents/json_value.h"

namespace zymdb::documents {
namespace {

using Naming = std::function<std::string(const Part&)>;

// Every part that has no name yet is given the one that `naming` makes, where no other part would have it.
void name_apart(const PartClass& of, const Naming& naming, std::vector<std::string>& names,
                std::set<std::string>& taken) {
  std::map<std::string, size_t> wanted;
  std::vector<std::string> offers(names.size());
  for (size_t i = 0; i < names.size(); ++i) {
    if (!names[i].empty()) continue;
    offers[i] = utf8_text(naming(of.parts[i]));
    ++wanted[offers[i]];
  }
  for (size_t i = 0; i < names.size(); ++i) {
    if (offers[i].empty() || wanted[offers[i]] > 1 || !taken.insert(offers[i]).second) continue;
    names[i] = offers[i];
  }
}

std::string place_and_description(const PartClass& of, const Part& part) {
  const std::string place = of.place(part), description = of.description(part);
  return place + (place.empty() || description.empty() ? "" : " ") + description;
}

}  // namespace

std::vector<std::string> part_names(const PartClass& of) {
  std::vector<std::string> names(of.parts.size());
  std::set<std::string> taken;
  name_apart(of, [&](const Part& part) { return of.place(part); }, names, taken);
  name_apart(of, [&](const Part& part) { return place_and_description(of, part); }, names, taken);
  size_t number = 0;
  for (size_t i = 0; i < names.size(); ++i) {
    if (!names[i].empty()) continue;
    const std::string text = utf8_text(place_and_description(of, of.parts[i]));
    do {
      names[i] = text + (text.empty() ? "#" : " #") + std::to_string(++number);
    } while (!taken.insert(names[i]).second);
  }
  return names;
}

std::string utf8_text(const std::string& text) {
  return Json::parse(Json(text).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

}  // namespace zymdb::documents
