#include "documents/document_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "common/source_file.h"
#include "documents/json_value.h"
#include "records/json.h"

namespace zymdb::documents {
namespace {

constexpr const char* kHeader[] = {kFormatVersionKey, kZymdbVersionKey, kGenerationKey};

Json json_of(const PartClass& of) {
  Json parts = Json::array();
  for (const Part& part : of.parts) {
    Json json = Json::object();
    for (size_t i = 0; i < part.size(); ++i) json[of.fields[i].key] = json_of_value(part[i]);
    parts.push_back(std::move(json));
  }
  return parts;
}

// Parses one document; `name` is told with what is wrong in it.
class Parser {
 public:
  Parser(const std::string& name, const std::vector<RecordType>& types) : name_(name), types_(types) {}

  Document parse(std::string_view text) const {
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) fail("not JSON, or cut short");
    if (!json.is_object()) fail("not a document of an inventory");
    check_version(json);
    Document document;
    if (const auto found = json.find(kGenerationKey); found != json.end() && found->is_number_unsigned())
      document.generation = found->get<uint64_t>();
    for (const auto& [key, parts] : json.items()) {
      if (std::ranges::find(kHeader, key) == std::end(kHeader)) document.classes.push_back(parse_class(key, parts));
    }
    return document;
  }

 private:
  [[noreturn]] void fail(const std::string& reason) const { throw SourceError(name_, reason); }

  void check_version(const Json& json) const {
    const auto version = json.find(kFormatVersionKey);
    if (version == json.end() || !version->is_number_unsigned()) fail("not a document of an inventory");
    if (version->get<uint64_t>() > static_cast<uint64_t>(records::kFormatVersion))
      fail("its format_version " + version->dump() + " is newer than this program's " +
           std::to_string(records::kFormatVersion));
  }

  PartClass parse_class(const std::string& key, const Json& parts) const {
    const auto type = std::ranges::find(types_, key, &RecordType::name);
    if (type == types_.end()) fail("an inventory has no '" + key + "'");
    if (!parts.is_array()) fail("'" + key + "' is no array");
    PartClass of{type->name, type->fields, {}};
    for (const Json& part : parts) of.parts.push_back(parse_part(of, part));
    return of;
  }

  Part parse_part(const PartClass& of, const Json& json) const {
    if (!json.is_object()) fail("'" + of.name + "' has an element that is no object");
    Part part(of.fields.size());
    for (const auto& [key, value] : json.items()) {
      const auto field = of.field(key);
      if (!field) fail("'" + of.name + "' has no field '" + key + "'");
      if (!value.is_null() && !value.is_number_integer() && !value.is_string())
        fail("'" + of.name + "." + key + "' is neither number nor text");
      part[*field] = value_of(value);
    }
    return part;
  }

  const std::string& name_;
  const std::vector<RecordType>& types_;
};

}  // namespace

std::string to_json(const Document& document) {
  Json json{{kFormatVersionKey, records::kFormatVersion}, {kZymdbVersionKey, ZYMDB_VERSION}};
  json[kGenerationKey] = document.generation ? Json(*document.generation) : Json();
  for (const PartClass& of : document.classes) json[of.name] = json_of(of);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Document parse_document(std::string_view text, const std::string& name, const std::vector<RecordType>& types) {
  return Parser(name, types).parse(text);
}

}  // namespace zymdb::documents
