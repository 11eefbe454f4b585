// Whatever text stands for a settings file: it is refused, or its settings are what another reader of JSON
// finds in it, with ids of their own and texts that can be stored.
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "checks.h"
#include "common/source_file.h"
#include "files/settings_file.h"

namespace {

using namespace zymdb;
using namespace zymdb::tool;
using records::SettingField;
using records::SettingType;
using zymdb::fuzz::require;
using Json = nlohmann::json;

template <class Number>
void check_number(const char* field, const Json& given, const char* key) {
  Number number = 0;
  std::memcpy(&number, field, sizeof number);
  require(given.is_null() ? number == 0 : given == number, "a setting differs from its file", key);
}

void check_text(const SettingField& field, const char* begin, const Json& given) {
  const std::string text(begin, strnlen(begin, field.size));
  require(text.size() < field.size, "a text goes on beyond its field", text);
  require(text == (given.is_null() ? "" : given.get<std::string>()), "a setting differs from its file", text);
  require(text.find('"') == text.npos, "a text that cannot be stored", text);
}

// A field that is left out, or null, is empty or 0.
void check_field(const SettingField& field, const SettingRecord& setting, const Json& file) {
  const char* const key = field.field.info.key;
  const char* const begin = reinterpret_cast<const char*>(&setting) + field.offset;
  const Json given = file.contains(key) ? file.at(key) : Json();
  if (field.type == SettingType::kText) return check_text(field, begin, given);
  require(field.size == sizeof(uint32_t), "a number of another width", key);
  if (field.type == SettingType::kSigned) return check_number<int32_t>(begin, given, key);
  check_number<uint32_t>(begin, given, key);
}

void check(const std::vector<SettingRecord>& settings, const Json& file) {
  require(file.is_array() && file.size() == settings.size(), "another number of settings");
  std::set<std::string> ids;
  for (size_t i = 0; i < settings.size(); ++i) {
    for (const SettingField& field : records::kSettingFields) check_field(field, settings[i], file[i]);
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
