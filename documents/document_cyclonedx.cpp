#include "documents/document_cyclonedx.h"

#include <uuid/uuid.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "common/text.h"
#include "documents/json_value.h"
#include "documents/part_names.h"
#include "records/text.h"

namespace zymdb::documents {
namespace {

using records::Nature;
using records::Role;
using records::Tells;

constexpr char kNamespace[] = "zymdb:";

// Serial numbers are names within this one (RFC 4122, version 5).
constexpr char kUuidNamespace[] = "bda7f778-2902-423d-96cc-334dd3bdb485";

constexpr size_t kNowhere = SIZE_MAX;

Json maker(const std::string& name) {
  return {{"name", name}};
}

// One part, as far as it is told by itself.
class PartView {
 public:
  PartView(const PartClass& of, const Part& part) : of_(of), part_(part) {}

  // Empty for what is not known.
  std::string text(Tells what) const {
    for (size_t i = 0; i < of_.fields.size(); ++i) {
      if (of_.fields[i].tells == what) return text_of(of_.fields[i], part_[i]);
    }
    return {};
  }

  std::string name(const std::string& otherwise) const {
    for (const std::string& text : {text(Tells::kName), of_.description(part_)}) {
      if (!text.empty()) return text;
    }
    return otherwise;
  }

  // "UUID=…", each on a line.
  std::string identity() const {
    std::string text;
    for (size_t i = 0; i < of_.fields.size(); ++i) {
      const FieldInfo& field = of_.fields[i];
      if (field.role == Role::kIdentity && records::is_known(part_[i]))
        text += std::string(field.key) + "=" + text_of(field, part_[i]) + "\n";
    }
    return text;
  }

  Json properties() const {
    Json properties = Json::array();
    for (size_t i = 0; i < of_.fields.size(); ++i) {
      const FieldInfo& field = of_.fields[i];
      const bool stays = field.role != Role::kState && field.role != Role::kVolatile && field.role != Role::kRow;
      if (stays && records::is_known(part_[i]))
        properties.push_back({{"name", kNamespace + of_.name + ":" + field.key}, {"value", text_of(field, part_[i])}});
    }
    return properties;
  }

  // Without what is within it. `name` tells it apart from the others of its class.
  Json component(Nature nature, const std::string& part_name) const {
    const std::string ref = of_.name + ":" + part_name;
    Json json{{"type", nature == Nature::kFirmware ? "firmware" : "device"}, {"bom-ref", ref}};
    if (const auto made_by = text(Tells::kMaker); !made_by.empty()) json["manufacturer"] = maker(made_by);
    json["name"] = name(part_name);
    if (const auto version = text(Tells::kVersion); !version.empty()) json["version"] = version;
    json["properties"] = properties();
    if (const auto version = text(Tells::kFirmware); !version.empty())
      json["components"].push_back({{"type", "firmware"},
                                    {"bom-ref", ref + "/firmware"},
                                    {"name", "Firmware of " + name(part_name)},
                                    {"version", version}});
    return json;
  }

 private:
  const PartClass& of_;
  const Part& part_;
};

// "0000:3b:00" of "0000:3b:00.1".
std::string device_of(const std::string& address) {
  return address.substr(0, address.find('.'));
}

class Bill {
 public:
  Bill(const Document& document, const std::vector<RecordType>& types) {
    for (const PartClass& of : document.classes) {
      const auto type = std::ranges::find(types, of.name, &RecordType::name);
      if (type->nature != Nature::kLogical) add(of, type->nature);
    }
    for (size_t i = 0; i < entries_.size(); ++i) within_[place_of(i)].push_back(i);
  }

  const Json& machine() const { return machine_; }
  const std::string& identity() const { return identity_; }
  const std::string& collected() const { return collected_; }

  // Those that are within no other, each with all that is within it.
  Json components() const { return components_within(kNowhere); }

 private:
  struct Entry {
    Json json;
    std::string function;  // that it belongs to
    std::string own_function;
    std::string position;
  };

  void add(const PartClass& of, Nature nature) {
    const auto names = part_names(of);
    for (size_t i = 0; i < of.parts.size(); ++i) {
      if (of.is_vacant(of.parts[i])) continue;
      const PartView part(of, of.parts[i]);
      Json json = part.component(nature, names[i]);
      if (nature == Nature::kMachine && machine_.is_null())
        set_machine(part, std::move(json));
      else
        add_entry(part, std::move(json));
    }
  }

  void set_machine(const PartView& part, Json json) {
    machine_ = std::move(json);
    identity_ = part.identity();
    collected_ = part.text(Tells::kCollected);
  }

  void add_entry(const PartView& part, Json json) {
    const size_t at = entries_.size();
    entries_.push_back({.json = std::move(json),
                        .function = part.text(Tells::kFunction),
                        .own_function = part.text(Tells::kOwnFunction),
                        .position = part.text(Tells::kPosition)});
    if (const auto& own = entries_[at].own_function; !own.empty()) functions_.emplace(own, at);
    const auto first = part.text(Tells::kFirstFunction);
    if (first.empty()) return;
    cards_.emplace(device_of(first), at);
    is_card_.insert(at);
    if (const auto& position = entries_[at].position; position != records::kOnBoard) {
      const auto [found, is_new] = positions_.emplace(position, at);
      // Whose of two cards in one position something is cannot be told.
      if (!is_new) found->second = kNowhere;
    }
  }

  static size_t found_in(const std::map<std::string, size_t>& places, const std::string& key) {
    const auto found = key.empty() ? places.end() : places.find(key);
    return found == places.end() ? kNowhere : found->second;
  }

  size_t place_of(size_t at) const {
    const Entry& entry = entries_[at];
    if (is_card_.contains(at)) return kNowhere;
    if (const size_t function = found_in(functions_, entry.function); function != kNowhere) return function;
    const size_t card = found_in(cards_, device_of(entry.own_function));
    return card != kNowhere ? card : found_in(positions_, entry.position);
  }

  Json components_within(size_t at) const {
    Json components = Json::array();
    const auto inner = within_.find(at);
    if (inner == within_.end()) return components;
    for (const size_t i : inner->second) {
      Json& json = components.emplace_back(entries_[i].json);
      for (Json& each : components_within(i)) json["components"].push_back(std::move(each));
    }
    return components;
  }

  Json machine_;
  std::string identity_, collected_;
  std::vector<Entry> entries_;
  std::map<std::string, size_t> functions_;  // by address
  std::map<std::string, size_t> cards_;      // by the address of their device
  std::map<std::string, size_t> positions_;  // cards
  std::set<size_t> is_card_;
  std::map<size_t, std::vector<size_t>> within_;
};

std::string dumped(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string urn_of(const std::string& name) {
  uuid_t space, uuid;
  std::array<char, UUID_STR_LEN> text{};
  uuid_parse(kUuidNamespace, space);
  uuid_generate_sha1(uuid, space, name.data(), name.size());
  uuid_unparse_lower(uuid, text.data());
  return std::string("urn:uuid:") + text.data();
}

// "2026-01-31T12:00:00Z"; empty for what is no time.
std::string timestamp(const std::string& seconds) {
  const auto number = leading_number(seconds);
  return number ? iso_text(static_cast<int64_t>(*number)) : "";
}

}  // namespace

std::string to_cyclonedx(const Document& document, const std::vector<RecordType>& types) {
  const Bill bill(document, types);
  const Json components = bill.components();
  const std::string name = bill.identity().empty() ? dumped(components, -1) : bill.identity();
  Json metadata = Json::object();
  if (const auto time = timestamp(bill.collected()); !time.empty()) metadata["timestamp"] = time;
  metadata["tools"]["components"] =
      Json::array({{{"type", "application"}, {"name", "zymdb"}, {"version", ZYMDB_VERSION}}});
  if (!bill.machine().is_null()) metadata["component"] = bill.machine();
  return dumped({{"bomFormat", "CycloneDX"},
                 {"specVersion", "1.6"},
                 {"serialNumber", urn_of(name)},
                 {"version", std::max<uint64_t>(document.generation.value_or(1), 1)},
                 {"metadata", metadata},
                 {"components", components}},
                2) +
         "\n";
}

}  // namespace zymdb::documents
