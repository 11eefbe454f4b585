#include "documents/check.h"

#include <algorithm>
#include <map>
#include <optional>

#include "common/text.h"

namespace zymdb::documents {
namespace {

using records::Attention;
using records::Relation;
using records::Role;

constexpr char kNotKnown[] = "not known";

using Parts = std::vector<const Part*>;

bool is_same(std::string_view one, std::string_view other) {
  return lower_case(valid_utf8(one)) == lower_case(valid_utf8(other));
}

bool is_any_of(std::string_view text, const std::vector<std::string>& texts) {
  return std::ranges::any_of(texts, [&](const std::string& each) { return is_same(each, text); });
}

bool has_text(const PartClass& of, const Part& part, Role role, std::string_view text) {
  for (size_t i = 0; i < of.fields.size(); ++i) {
    if (of.fields[i].role == role && is_same(records::text_of(of.fields[i], part[i]), text)) return true;
  }
  return false;
}

std::string known_text_of(const FieldInfo& field, const Value& value) {
  return records::is_known(value) ? records::text_of(field, value) : kNotKnown;
}

// "FIRMWARE >= 2.0", "MODEL PM9A3".
std::string text_of(const PartClass& of, const records::FieldCondition& each) {
  const auto& [relation, value] = each.condition;
  const std::string sign = relation == Relation::kEqual ? "" : std::string(sign_of(relation)) + " ";
  return of.fields[each.field].heading + (" " + sign) + (value.empty() ? kNotKnown : value);
}

std::string text_of(const PartClass& of, const Conditions& conditions) {
  std::vector<std::string> texts;
  for (const auto& each : conditions) texts.push_back(text_of(of, each));
  return texts.empty() ? "a part" : listed(texts);
}

std::string parts_text(const std::string& number) {
  return number + (number == "1" ? " part" : " parts");
}

bool is_met(const PartClass& of, const Part& part, const records::FieldCondition& each) {
  return records::holds(of.fields[each.field], part[each.field], each.condition);
}

bool meets(const PartClass& of, const Part& part, const Conditions& conditions) {
  return std::ranges::all_of(conditions, [&](const auto& each) { return is_met(of, part, each); });
}

// Which of the parts is which of those expected: as many as can be meet their conditions.
class Assignment {
 public:
  Assignment(const PartClass& of, const std::vector<Conditions>& wanted, const Parts& parts)
      : of_(of), wanted_(wanted), parts_(parts), part_of_(wanted.size()), wanted_of_(parts.size()) {
    for (size_t i = 0; i < wanted.size(); ++i) {
      std::vector<bool> tried(parts.size());
      find_part(i, tried);
    }
    for (size_t i = 0; i < wanted.size(); ++i) {
      if (!part_of_[i]) take_any(i);
    }
  }

  // Null for one that is not there at all.
  const Part* part_of(size_t wanted) const { return part_of_[wanted] ? parts_[*part_of_[wanted]] : nullptr; }

 private:
  // A part that somebody else has is free when that one finds another.
  bool find_part(size_t wanted, std::vector<bool>& tried) {
    for (size_t i = 0; i < parts_.size(); ++i) {
      if (tried[i] || !meets(of_, *parts_[i], wanted_[wanted])) continue;
      tried[i] = true;
      if (wanted_of_[i] && !find_part(*wanted_of_[i], tried)) continue;
      assign(wanted, i);
      return true;
    }
    return false;
  }

  void take_any(size_t wanted) {
    const auto unused = std::ranges::find_if_not(wanted_of_, &std::optional<size_t>::has_value);
    if (unused != wanted_of_.end()) assign(wanted, static_cast<size_t>(unused - wanted_of_.begin()));
  }

  void assign(size_t wanted, size_t part) {
    part_of_[wanted] = part;
    wanted_of_[part] = wanted;
  }

  const PartClass& of_;
  const std::vector<Conditions>& wanted_;
  const Parts& parts_;
  std::vector<std::optional<size_t>> part_of_, wanted_of_;
};

// Checks the expectations of one class.
class Checker {
 public:
  explicit Checker(const PartClass& of) : of_(of), parts_(of.present()) {}

  std::vector<Failure> check(const Expectation& expectation) {
    failures_.clear();
    switch (expectation.aspect) {
      case Aspect::kCount:
        check_count("", parts_.size(), expectation.count);
        break;
      case Aspect::kHealthy:
        check_health(expectation);
        break;
      case Aspect::kFullLinks:
        check_links(expectation);
        break;
      case Aspect::kUnique:
        check_identities(expectation);
        break;
      case Aspect::kEveryPart:
        check_parts(parts_, expectation);
        break;
      case Aspect::kAtPlace:
        check_place(expectation);
        break;
      case Aspect::kOfModel:
        check_model(expectation);
    }
    return std::move(failures_);
  }

 private:
  void fail(const std::string& place, const std::string& expected, const std::string& found) {
    failures_.push_back({place, expected, found, {}});
  }

  Parts parts_that(auto predicate) const {
    Parts chosen;
    std::ranges::copy_if(parts_, std::back_inserter(chosen), predicate);
    return chosen;
  }

  bool is_excepted(const Part& part, const Expectation& expectation) const {
    return std::ranges::any_of(expectation.except,
                               [&](const auto& place) { return is_at(of_, part, place); });
  }

  void check_count(const std::string& place, size_t count, const std::optional<Condition>& wanted) {
    constexpr FieldInfo kNumber{
        .key = "count", .heading = "COUNT", .meaning = "", .kind = records::Kind::kNumber};
    if (!wanted || records::holds(kNumber, Value(uint64_t{count}), *wanted)) return;
    const std::string sign =
        wanted->relation == Relation::kEqual ? "" : std::string(sign_of(wanted->relation)) + " ";
    fail(place, sign + parts_text(wanted->value), parts_text(std::to_string(count)));
  }

  void check_health(const Expectation& expectation) {
    for (const Part* const part : parts_) {
      std::vector<std::string> warnings;
      for (size_t i = 0; i < of_.fields.size(); ++i) {
        const FieldInfo& field = of_.fields[i];
        if (attention_of(field, (*part)[i]) == Attention::kWarning)
          warnings.push_back(field.heading + (" " + records::text_of(field, (*part)[i])));
      }
      if (!warnings.empty() && !is_excepted(*part, expectation))
        fail(of_.place(*part), "healthy", listed(warnings));
    }
  }

  void check_links(const Expectation& expectation) {
    const auto state = of_.field(kLinkStateField), link = of_.field(kLinkField);
    if (!state || !link) return;
    for (const Part* const part : parts_) {
      const bool is_full = attention_of(of_.fields[*state], (*part)[*state]) != Attention::kWarning;
      if (!is_full && !is_excepted(*part, expectation))
        fail(of_.place(*part), "a full link", known_text_of(of_.fields[*link], (*part)[*link]));
    }
  }

  void check_identities(const Expectation& expectation) {
    for (size_t i = 0; i < of_.fields.size(); ++i) {
      if (of_.fields[i].role == Role::kIdentity) check_identity(i, expectation);
    }
  }

  void check_identity(size_t field, const Expectation& expectation) {
    std::map<std::string, Parts> owners;
    for (const Part* const part : parts_) {
      if (records::is_known((*part)[field]))
        owners[records::text_of(of_.fields[field], (*part)[field])].push_back(part);
    }
    for (const auto& [identity, parts] : owners) {
      if (parts.size() == 1 || is_any_of(identity, expectation.except)) continue;
      std::vector<std::string> places;
      for (const Part* const part : parts) places.push_back(of_.place(*part));
      fail(listed(places), of_.fields[field].heading + std::string(" once"),
           identity + " " + std::to_string(parts.size()) + " times");
      failures_.back().identity = identity;
    }
  }

  void check_part(const std::string& place, const Part& part, const Conditions& conditions) {
    for (const auto& each : conditions) {
      if (!is_met(of_, part, each))
        fail(place, text_of(of_, each), known_text_of(of_.fields[each.field], part[each.field]));
    }
  }

  void check_parts(const Parts& parts, const Expectation& expectation) {
    for (const Conditions& conditions : expectation.parts) {
      for (const Part* const part : parts) check_part(of_.place(*part), *part, conditions);
    }
  }

  void check_place(const Expectation& expectation) {
    const Parts parts = parts_that([&](const Part* part) { return is_at(of_, *part, expectation.name); });
    if (expectation.parts.empty()) {
      for (const Part* const part : parts) fail(expectation.name, "empty", of_.description(*part));
      return;
    }
    const Assignment assignment(of_, expectation.parts, parts);
    for (size_t i = 0; i < expectation.parts.size(); ++i) {
      const Part* const part = assignment.part_of(i);
      if (part != nullptr)
        check_part(expectation.name, *part, expectation.parts[i]);
      else
        fail(expectation.name, text_of(of_, expectation.parts[i]), "nothing");
    }
  }

  void check_model(const Expectation& expectation) {
    const Parts parts =
        parts_that([&](const Part* part) { return is_of_model(of_, *part, expectation.name); });
    check_count(expectation.name, parts.size(), expectation.count);
    check_parts(parts, expectation);
  }

  const PartClass& of_;
  Parts parts_;
  std::vector<Failure> failures_;
};

}  // namespace

std::vector<std::string> missing_classes(const std::vector<Expectation>& expectations,
                                         const Document& document) {
  std::vector<std::string> missing;
  for (const Expectation& each : expectations) {
    if (document.find(each.part_class) == nullptr && !is_any_of(each.part_class, missing))
      missing.push_back(each.part_class);
  }
  return missing;
}

std::vector<Verdict> check(const std::vector<Expectation>& expectations, const Document& document) {
  std::vector<Verdict> verdicts;
  for (const Expectation& each : expectations) {
    const PartClass* const of = document.find(each.part_class);
    if (of != nullptr) verdicts.push_back({each.part_class, title_of(each), Checker(*of).check(each)});
  }
  return verdicts;
}

size_t failure_count(const std::vector<Verdict>& verdicts) {
  size_t count = 0;
  for (const Verdict& verdict : verdicts) count += verdict.failures.size();
  return count;
}

std::string text_of(const Failure& failure) {
  return (failure.place.empty() ? "" : failure.place + ": ") + "expected " + failure.expected + ", found " +
         failure.found;
}

bool is_at(const PartClass& of, const Part& part, std::string_view place) {
  return is_same(of.place(part), place) || has_text(of, part, Role::kPlace, place);
}

bool is_of_model(const PartClass& of, const Part& part, std::string_view model) {
  return is_same(of.model(part), model) || has_text(of, part, Role::kModel, model);
}

}  // namespace zymdb::documents
