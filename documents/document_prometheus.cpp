#include "documents/document_prometheus.h"

#include <algorithm>

#include "documents/part_names.h"
#include "records/text.h"
#include "records/units.h"

namespace zymdb::documents {
namespace {

using records::Kind;
using records::Role;

bool is_upper(char c) {
  return c >= 'A' && c <= 'Z';
}

bool is_lower(char c) {
  return c >= 'a' && c <= 'z';
}

// A single letter is no word: it belongs to the capitals before it ("PCIe"), or to what follows ("iSCSI").
bool begins_word(std::string_view key, size_t at) {
  if (at < 2 || !is_upper(key[at]) || key[at - 1] == '_') return false;
  if (!is_upper(key[at - 1])) return true;
  const auto letter = [&](size_t i) { return i < key.size() ? key[i] : '\0'; };
  return is_lower(letter(at + 1)) && !is_upper(letter(at + 2));
}

std::string snake_case(std::string_view key) {
  std::string name;
  for (size_t i = 0; i < key.size(); ++i) {
    if (begins_word(key, i)) name += '_';
    name += is_upper(key[i]) ? static_cast<char>(key[i] - 'A' + 'a') : key[i] == '-' ? '_' : key[i];
  }
  return name;
}

// "cores", since "core_count" would be a part of a histogram.
std::string without_count(std::string name) {
  constexpr std::string_view kCount = "_count";
  return name.ends_with(kCount) ? name.substr(0, name.size() - kCount.size()) + "s" : name;
}

bool tells_state(const FieldInfo& field) {
  return field.role == Role::kState || field.role == Role::kVolatile;
}

bool is_number(const FieldInfo& field) {
  return field.kind == Kind::kNumber && !field.is_wide_identifier();
}

std::string escaped(std::string_view text, std::string_view special) {
  std::string result;
  for (const char c : text) {
    if (special.find(c) == std::string_view::npos) {
      result += c;
    } else {
      result += '\\';
      result += c == '\n' ? 'n' : c;
    }
  }
  return result;
}

std::string label(const std::string& name, const std::string& value) {
  return name + "=\"" + escaped(utf8_text(value), "\\\"\n") + "\"";
}

// A metric: its samples follow one another, with their labels.
class Metric {
 public:
  Metric(std::string name, std::string help) : name_(std::move(name)), help_(std::move(help)) {}

  void add(const std::string& labels, const std::string& value) {
    samples_ += name_ + (labels.empty() ? "" : "{" + labels + "}") + " " + value + "\n";
  }

  // Nothing where nothing was added.
  std::string text() const {
    if (samples_.empty()) return {};
    return "# HELP " + name_ + " " + escaped(help_, "\\\n") + "\n# TYPE " + name_ + " gauge\n" + samples_;
  }

 private:
  std::string name_, help_, samples_;
};

std::string number_text(const FieldInfo& field, const Value& value) {
  static constexpr records::BaseUnit kPlain{"", ""};
  const auto* const base = records::base_unit(field.unit);
  const auto& unit = base != nullptr ? *base : kPlain;
  const auto* const number = std::get_if<int64_t>(&value);
  return number != nullptr ? in_base_units(unit, *number) : in_base_units(unit, std::get<uint64_t>(value));
}

class ClassMetrics {
 public:
  ClassMetrics(const PartClass& of, const std::string& description)
      : of_(of), description_(description), prefix_("zymdb_" + snake_case(of.name) + "_") {
    for (const std::string& name : part_names(of)) labels_.push_back(label("part", name));
  }

  std::string text() const {
    std::string text = info();
    for (size_t i = 0; i < of_.fields.size(); ++i) {
      if (!metric_name(of_.fields[i]).empty()) text += values(i);
    }
    return text;
  }

 private:
  std::string info() const {
    Metric metric(prefix_ + "info", description_);
    for (size_t i = 0; i < of_.parts.size(); ++i) {
      std::string labels = labels_[i];
      for (size_t j = 0; j < of_.fields.size(); ++j) {
        const FieldInfo& field = of_.fields[j];
        const Value& value = of_.parts[i][j];
        if (tells_state(field) || field.role == Role::kRow || !metric_name(field).empty()) continue;
        if (records::is_known(value)) labels += "," + label(snake_case(field.key), text_of(field, value));
      }
      metric.add(labels, "1");
    }
    return metric.text();
  }

  std::string values(size_t at) const {
    const FieldInfo& field = of_.fields[at];
    Metric metric(prefix_ + metric_name(field), description_ + ": " + field.meaning);
    for (size_t i = 0; i < of_.parts.size(); ++i) {
      const Value& value = of_.parts[i][at];
      if (const auto* const text = std::get_if<std::string>(&value))
        metric.add(labels_[i] + "," + label(snake_case(field.key), *text), "1");
      else if (records::is_known(value))
        metric.add(labels_[i], number_text(field, value));
    }
    return metric.text();
  }

  const PartClass& of_;
  const std::string& description_;
  std::string prefix_;
  std::vector<std::string> labels_;  // of each part
};

std::string of_the_whole(const Document& document) {
  Metric build("zymdb_build_info", "The program that wrote this");
  build.add(label("version", ZYMDB_VERSION), "1");
  Metric generation("zymdb_inventory_generation", "How often the inventory has changed");
  if (document.generation) generation.add("", std::to_string(*document.generation));
  Metric parts("zymdb_parts", "Parts of each class, vacant positions too");
  for (const PartClass& of : document.classes) parts.add(label("class", of.name), std::to_string(of.parts.size()));
  return build.text() + generation.text() + parts.text();
}

}  // namespace

std::string metric_name(const FieldInfo& field) {
  // What a text that changes on its own is derived from is a metric already.
  const bool is_repeated = field.role == Role::kVolatile && field.is_derived;
  const bool is_metric = tells_state(field) || (field.is_amount && is_number(field));
  if (!is_metric || is_repeated || field.role == Role::kRow) return {};
  std::string name = snake_case(field.key);
  if (!is_number(field)) return name + "_info";
  name = without_count(std::move(name));
  if (const auto* const unit = records::base_unit(field.unit)) name.append("_").append(unit->name);
  return name;
}

std::string to_prometheus(const Document& document, const std::vector<RecordType>& types) {
  std::string text = of_the_whole(document);
  for (const PartClass& of : document.classes) {
    const auto type = std::ranges::find(types, of.name, &RecordType::name);
    text += ClassMetrics(of, type->description).text();
  }
  return text;
}

}  // namespace zymdb::documents
