// Whatever text stands for a settings file: it is refused, or its settings are what another reader of JSON
// finds in it, with ids of their own and texts that can be stored.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "checks.h"
#include "common/source_file.h"
#include "files/settings_file.h"

namespace {

using namespace zymdb;
using namespace zymdb::tool;
using zymdb::fuzz::require;
using Json = nlohmann::json;

// A field that is left out, or null, is empty or 0.
void check_field(const SettingField& field, const Value& value, const Json& setting) {
  const auto found = setting.find(field.column.info.field);
  const bool given = found != setting.end() && !found->is_null();
  const auto differ = "a setting differs from its file";
  if (const auto* const text = std::get_if<std::string>(&value)) {
    require(*text == (given ? found->get<std::string>() : ""), differ, *text);
    require(text->size() < field.size, "a text goes on beyond its field", *text);
    require(text->find('"') == text->npos, "a text that cannot be stored", *text);
  } else if (const auto* const number = std::get_if<uint64_t>(&value)) {
    require(given ? *found == *number : *number == 0, differ, field.column.info.field);
  } else {
    const auto signed_number = std::get<int64_t>(value);
    require(given ? *found == signed_number : signed_number == 0, differ, field.column.info.field);
  }
}

void check(const std::vector<SettingRecord>& settings, const Json& file) {
  require(file.is_array() && file.size() == settings.size(), "another number of settings");
  std::set<std::string> ids;
  for (size_t i = 0; i < settings.size(); ++i) {
    for (const SettingField& field : kSettingFields)
      check_field(field, field.column.read(settings[i]), file[i]);
    require(settings[i].SettingID[0] != '\0' && ids.insert(settings[i].SettingID).second,
            "an id that is not its own", settings[i].SettingID);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    check(parse_settings(text, "input"), Json::parse(text));
  } catch (const zymdb::SourceError&) {
    // A refused file is as good as a read one.
  }
  return 0;
}
