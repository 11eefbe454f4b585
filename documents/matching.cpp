#include "documents/matching.h"

#include <algorithm>
#include <functional>
#include <map>
#include <unordered_set>

namespace zymdb::documents {
namespace {

using records::Role;

// Parts of one side that have no partner yet.
struct Side {
  explicit Side(const PartClass& parts) : of(parts), open(parts.present()) {}
  const PartClass& of;
  std::vector<const Part*> open;
};

// What parts are compared by; empty for a part that has none.
using Key = std::function<std::string(const PartClass&, const Part&)>;

std::string text(const FieldInfo& field, const Value& value) {
  return std::string(field.key) + "=" + records::text_of(field, value) + "\n";
}

std::string all_of(Role role, const PartClass& of, const Part& part) {
  std::string key;
  for (size_t i = 0; i < of.fields.size(); ++i) {
    if (of.fields[i].role == role && records::is_known(part[i])) key += text(of.fields[i], part[i]);
  }
  return key;
}

// Everything but where the inventory has it.
std::string everything(const PartClass& of, const Part& part) {
  std::string key;
  for (size_t i = 0; i < of.fields.size(); ++i) {
    if (of.fields[i].role != Role::kRow) key += text(of.fields[i], part[i]);
  }
  return key;
}
std::string whole_place(const PartClass& of, const Part& part) {
  return all_of(Role::kPlace, of, part) + "in its place";
}
std::string model(const PartClass& of, const Part& part) {
  return all_of(Role::kModel, of, part);
}
std::string place_and_model(const PartClass& of, const Part& part) {
  return whole_place(of, part) + model(of, part);
}
bool has_identity(const PartClass& of, const Part& part) {
  return !all_of(Role::kIdentity, of, part).empty();
}
// A part with an identity is another one, however alike.
std::string place_of_nameless(const PartClass& of, const Part& part) {
  return has_identity(of, part) ? std::string() : place_and_model(of, part);
}
std::string model_of_nameless(const PartClass& of, const Part& part) {
  return has_identity(of, part) ? std::string() : model(of, part);
}

using Groups = std::map<std::string, std::vector<const Part*>>;

Groups groups_of(const Side& side, const Key& key) {
  Groups groups;
  for (const Part* const part : side.open) {
    const std::string name = key(side.of, *part);
    if (!name.empty()) groups[name].push_back(part);
  }
  return groups;
}

class Matching {
 public:
  Matching(const PartClass& before, const PartClass& after) : before_(before), after_(after) {}

  // Pairs what has one key, in the order of the documents; where several have it only if `ambiguous`.
  void pair_by(const Key& key, bool ambiguous) {
    const Groups news = groups_of(after_, key);
    for (const auto& [name, olds] : groups_of(before_, key)) {
      const auto found = news.find(name);
      if (found == news.end()) continue;
      const bool is_unique = olds.size() == 1 && found->second.size() == 1;
      if (!is_unique && !ambiguous) continue;
      for (size_t i = 0; i < std::min(olds.size(), found->second.size()); ++i) pair(olds[i], found->second[i]);
    }
    const auto is_paired = [this](const Part* part) { return paired_.contains(part); };
    std::erase_if(before_.open, is_paired);
    std::erase_if(after_.open, is_paired);
  }

  void pair_by_identity() {
    for (size_t i = 0; i < before_.of.fields.size(); ++i) {
      if (before_.of.fields[i].role != Role::kIdentity) continue;
      const auto identity = [i](const PartClass& of, const Part& part) {
        return records::is_known(part[i]) ? text(of.fields[i], part[i]) : std::string();
      };
      pair_by([&](const PartClass& of, const Part& part) {
        const std::string name = identity(of, part);
        return name.empty() ? name : name + whole_place(of, part);
      }, false);
      pair_by(identity, false);
    }
  }

  std::vector<Pair> result() {
    for (const Part* const part : before_.open) pairs_.push_back({part, nullptr});
    for (const Part* const part : after_.open) pairs_.push_back({nullptr, part});
    return std::move(pairs_);
  }

 private:
  void pair(const Part* before, const Part* after) {
    pairs_.push_back({before, after});
    paired_.insert({before, after});
  }

  Side before_, after_;
  std::vector<Pair> pairs_;
  std::unordered_set<const Part*> paired_;
};

}  // namespace

std::vector<Pair> match(const PartClass& before, const PartClass& after, MatchBy by) {
  Matching matching(before, after);
  // First, so that of several that resemble each other those are paired that are the same.
  matching.pair_by(everything, true);
  if (by == MatchBy::kIdentity) {
    matching.pair_by_identity();
    matching.pair_by(place_of_nameless, true);
    matching.pair_by(model_of_nameless, true);
  }
  matching.pair_by(whole_place, true);
  matching.pair_by([](const PartClass& of, const Part& part) { return of.place(part); }, false);
  return matching.result();
}

}  // namespace zymdb::documents
