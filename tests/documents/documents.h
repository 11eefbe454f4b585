// Documents of parts that do not exist.
#ifndef ZYMDB_TESTS_DOCUMENTS_DOCUMENTS_H
#define ZYMDB_TESTS_DOCUMENTS_DOCUMENTS_H

#include <string>
#include <utility>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

using records::Role;

inline FieldInfo field(const char* key, const char* heading, Role role, bool shown = true) {
  FieldInfo info{.key = key, .heading = heading, .meaning = ""};
  info.role = role;
  info.shown = shown ? records::Shown::kByDefault : records::Shown::kNo;
  return info;
}

inline FieldInfo size_field() {
  FieldInfo info = field("Size", "SIZE", Role::kModel);
  info.is_derived = true;
  return info;
}

inline FieldInfo health_field() {
  FieldInfo info = field("Health", "HEALTH", Role::kState);
  info.judge = [](const Value& health) {
    return health == Value("ok") ? records::Attention::kNone : records::Attention::kWarning;
  };
  return info;
}

inline FieldInfo row_field() {
  FieldInfo info = field("Row", "ROW", Role::kRow);
  info.kind = records::Kind::kNumber;
  return info;
}

// Place, serial number, model, size ("empty" of a position without a part), health, load, row of the
// inventory, a detail that no table shows, and firmware.
inline std::vector<FieldInfo> fields() {
  return {field("Place", "PLACE", Role::kPlace),
          field("Serial", "SERIAL", Role::kIdentity),
          field("Model", "MODEL", Role::kModel),
          size_field(),
          health_field(),
          field("Load", "LOAD", Role::kVolatile),
          row_field(),
          field("Detail", "DETAIL", Role::kStable, false),
          field("Firmware", "FIRMWARE", Role::kVersion)};
}

struct Module {
  std::string place = "A1";
  std::string serial = "s1";
  std::string model = "m1";
  std::string size = "32 GiB";
  std::string health = "ok";
  uint64_t load = 0;
  uint64_t row = 1;
  std::string detail = "d";
  std::string firmware = "";
};

inline Value text_or_unknown(const std::string& text) {
  return text.empty() ? Value() : Value(text);
}

inline Part part(const Module& module) {
  return {text_or_unknown(module.place),
          text_or_unknown(module.serial),
          text_or_unknown(module.model),
          text_or_unknown(module.size),
          text_or_unknown(module.health),
          module.load,
          module.row,
          text_or_unknown(module.detail),
          text_or_unknown(module.firmware)};
}

inline Document document(const std::vector<Module>& modules) {
  PartClass of{"modules", fields(), {}};
  for (const Module& module : modules) of.parts.push_back(part(module));
  return {std::nullopt, {of}};
}

}  // namespace zymdb::documents

#endif
