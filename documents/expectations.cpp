#include "documents/expectations.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#include "common/source_file.h"
#include "common/text.h"
#include "records/text.h"

namespace zymdb::documents {
namespace {

constexpr std::string_view kVersionKey = "format_version";
constexpr std::string_view kCountKey = "count";
constexpr std::string_view kExceptKey = "except";

// What a class's table may have.
struct AspectKey {
  std::string_view key;
  Aspect aspect;
};
constexpr AspectKey kAspects[] = {
    {kCountKey, Aspect::kCount},  {"healthy", Aspect::kHealthy}, {"full_links", Aspect::kFullLinks},
    {"unique", Aspect::kUnique},  {"all", Aspect::kEveryPart},   {"at", Aspect::kAtPlace},
    {"models", Aspect::kOfModel},
};

struct Entry {
  const toml::key* key;
  const toml::node* value;
};

// A table's entries as the text has them.
std::vector<Entry> entries_of(const toml::table& table) {
  std::vector<Entry> entries;
  for (const auto& [key, value] : table) entries.push_back({&key, &value});
  std::ranges::sort(entries, {}, [](const Entry& each) {
    const auto& [line, column] = each.key->source().begin;
    return std::pair(line, column);
  });
  return entries;
}

template <class Named>
std::string names_of(const Named& named, auto name) {
  std::vector<std::string> names;
  for (const auto& each : named) names.emplace_back(std::invoke(name, each));
  return listed(names);
}

// Parses one file; `name` is told with what is wrong in it, and where.
class Parser {
 public:
  Parser(const std::string& name, const std::vector<RecordType>& types) : name_(name), types_(types) {}

  std::vector<Expectation> parse(std::string_view text) {
    const toml::table table = parsed(text);
    check_version(table);
    for (const auto& [key, value] : entries_of(table)) {
      if (key->str() != kVersionKey) add_class(*key, *value);
    }
    if (expectations_.empty()) throw SourceError(name_, "nothing is expected");
    return std::move(expectations_);
  }

 private:
  [[noreturn]] void fail(const toml::source_region& where, const std::string& reason) const {
    throw SourceError::at_line(name_, where.begin.line, reason);
  }

  toml::table parsed(std::string_view text) const {
    try {
      return toml::parse(text, name_);
    } catch (const toml::parse_error& error) {
      fail(error.source(), std::string(error.description()));
    }
  }

  void check_version(const toml::table& table) const {
    const toml::node* const version = table.get(kVersionKey);
    if (version == nullptr || !version->is_integer())
      throw SourceError(name_, "not a file of expectations: it has no format_version");
    const auto number = version->as_integer()->get();
    if (number != kExpectationsFormatVersion)
      fail(version->source(), "format_version " + std::to_string(number) + "; this program knows " +
                                  std::to_string(kExpectationsFormatVersion));
  }

  const toml::table& table_of(const toml::key& key, const toml::node& value) const {
    if (!value.is_table()) fail(key.source(), "'" + std::string(key.str()) + "' is no table");
    return *value.as_table();
  }

  void add_class(const toml::key& key, const toml::node& value) {
    const auto type = std::ranges::find(types_, key.str(), &RecordType::name);
    if (type == types_.end())
      fail(key.source(), "unknown class '" + std::string(key.str()) + "'; there are " +
                             names_of(types_, &RecordType::name));
    for (const auto& [aspect, content] : entries_of(table_of(key, value)))
      add_aspect(*type, *aspect, *content);
  }

  void add_aspect(const RecordType& type, const toml::key& key, const toml::node& value) {
    const auto found = std::ranges::find(kAspects, key.str(), &AspectKey::key);
    if (found == std::end(kAspects))
      fail(key.source(), "unknown expectation '" + std::string(key.str()) + "'; there are " +
                             names_of(kAspects, &AspectKey::key));
    Expectation expectation{found->aspect, type.name};
    switch (found->aspect) {
      case Aspect::kCount:
        expectation.count = count_of(key, value);
        return expectations_.push_back(std::move(expectation));
      case Aspect::kHealthy:
      case Aspect::kFullLinks:
      case Aspect::kUnique:
        return add_demand(type, key, value, std::move(expectation));
      case Aspect::kEveryPart:
        expectation.parts = {conditions_of(type, table_of(key, value))};
        return expectations_.push_back(std::move(expectation));
      case Aspect::kAtPlace:
      case Aspect::kOfModel:
        for (const auto& [name, content] : entries_of(table_of(key, value)))
          add_named(type, *name, *content, expectation);
    }
  }

  // "healthy = true", "healthy = { except = [...] }".
  void add_demand(const RecordType& type, const toml::key& key, const toml::node& value,
                  Expectation expectation) {
    require_that_class_has_it(type, key, expectation.aspect);
    if (!value.is_boolean()) {
      for (const auto& [name, content] : entries_of(table_of(key, value))) {
        if (name->str() != kExceptKey)
          fail(name->source(), "unknown '" + std::string(name->str()) + "'; there is except");
        expectation.except = texts_of(*name, *content);
      }
    } else if (!value.as_boolean()->get()) {
      return;
    }
    expectations_.push_back(std::move(expectation));
  }

  void require_that_class_has_it(const RecordType& type, const toml::key& key, Aspect aspect) const {
    const auto has = [&](auto predicate) { return std::ranges::any_of(type.fields, predicate); };
    const bool is_there =
        aspect == Aspect::kHealthy ? has([](const FieldInfo& field) { return field.judge != nullptr; })
        : aspect == Aspect::kFullLinks
            ? has([](const FieldInfo& field) { return field.key == kLinkStateField; })
            : has([](const FieldInfo& field) { return field.role == records::Role::kIdentity; });
    if (!is_there)
      fail(key.source(), type.name + " have nothing that '" + std::string(key.str()) + "' could be told by");
  }

  void add_named(const RecordType& type, const toml::key& key, const toml::node& value,
                 Expectation expectation) {
    expectation.name = key.str();
    if (expectation.aspect == Aspect::kAtPlace)
      expectation.parts = parts_of(type, key, value);
    else
      set_model(type, key, value, expectation);
    expectations_.push_back(std::move(expectation));
  }

  std::vector<Conditions> parts_of(const RecordType& type, const toml::key& key,
                                   const toml::node& value) const {
    if (value.is_table()) return {conditions_of(type, *value.as_table())};
    if (value.is_string() && value.as_string()->get() == records::kEmpty) return {};
    const bool has_tables = value.is_array() && value.as_array()->is_array_of_tables();
    if (!has_tables)
      fail(key.source(), "what is at '" + std::string(key.str()) + "' is neither a table nor \"empty\"");
    std::vector<Conditions> parts;
    for (const toml::node& each : *value.as_array()) parts.push_back(conditions_of(type, *each.as_table()));
    return parts;
  }

  void set_model(const RecordType& type, const toml::key& key, const toml::node& value,
                 Expectation& expectation) const {
    if (!value.is_table()) {
      expectation.count = count_of(key, value);
      return;
    }
    expectation.parts = {conditions_of(type, *value.as_table(), &expectation.count)};
  }

  // With `count`, the table may have one beside its fields.
  Conditions conditions_of(const RecordType& type, const toml::table& table,
                           std::optional<Condition>* count = nullptr) const {
    Conditions conditions;
    for (const auto& [key, value] : entries_of(table)) {
      if (count != nullptr && key->str() == kCountKey)
        *count = count_of(*key, *value);
      else
        conditions.push_back(field_condition_of(type, *key, *value));
    }
    return conditions;
  }

  records::FieldCondition field_condition_of(const RecordType& type, const toml::key& key,
                                             const toml::node& value) const {
    const auto field = records::find_field(type, key.str());
    if (!field)
      fail(key.source(), type.name + " have no field '" + std::string(key.str()) + "'; there are " +
                             names_of(type.fields, &FieldInfo::key));
    Condition condition = condition_of(key, value);
    if (!records::is_comparable(type.fields[*field], condition))
      fail(key.source(), "'" + std::string(key.str()) + "' cannot be " +
                             std::string(sign_of(condition.relation)) + " '" + condition.value + "'");
    return {*field, std::move(condition)};
  }

  Condition condition_of(const toml::key& key, const toml::node& value) const {
    if (value.is_integer()) return {records::Relation::kEqual, std::to_string(value.as_integer()->get())};
    if (!value.is_string())
      fail(key.source(), "'" + std::string(key.str()) + "' is neither a whole number nor a text in quotes");
    std::string_view text = value.as_string()->get();
    const auto relation = records::take_relation(text);
    if (relation) text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return {relation.value_or(records::Relation::kEqual), std::string(text)};
  }

  Condition count_of(const toml::key& key, const toml::node& value) const {
    Condition count = condition_of(key, value);
    if (!records::is_number(count.value))
      fail(key.source(), "'" + std::string(key.str()) + "' is no number of parts");
    return count;
  }

  std::vector<std::string> texts_of(const toml::key& key, const toml::node& value) const {
    const bool has_texts =
        value.is_array() && (value.as_array()->empty() || value.as_array()->is_homogeneous<std::string>());
    if (!has_texts) fail(key.source(), "'" + std::string(key.str()) + "' is no array of texts");
    std::vector<std::string> texts;
    for (const toml::node& each : *value.as_array()) texts.push_back(each.as_string()->get());
    return texts;
  }

  const std::string& name_;
  const std::vector<RecordType>& types_;
  std::vector<Expectation> expectations_;
};

}  // namespace

std::string title_of(const Expectation& expectation) {
  constexpr std::array<const char*, 7> kTitles = {"count",      "healthy", "full links", "unique",
                                                  "every part", "at ",     "model "};
  return kTitles[static_cast<size_t>(expectation.aspect)] + expectation.name;
}

std::vector<Expectation> parse_expectations(std::string_view text, const std::string& name,
                                            const std::vector<RecordType>& types) {
  return Parser(name, types).parse(text);
}

}  // namespace zymdb::documents
