// Settings of adapters as attributes of a BIOS: their types, their values, and what may be set.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_ATTRIBUTES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_ATTRIBUTES_H

#include <optional>
#include <string>
#include <vector>

#include "service/redfish/model/json.h"
#include "service/redfish/model/machine.h"
#include "service/redfish/model/messages.h"

namespace zymdb::service::redfish {

enum class AttributeType : uint8_t { kText, kInteger, kEnumeration };

// A setting with choices has one of them for a value; one whose values are numbers has a number.
AttributeType type_of(const Row& setting);

// "None;PXE;iSCSI", apart.
std::vector<std::string> choices_of(const Row& setting);

// The value in one of the setting's fields, as the attribute's type has it; null where nobody knows.
Json attribute_value(const Row& setting, std::string_view key);

// The attribute's entry in the registry.
Json attribute_entry(const Setting& setting);

// What a new value is saved as, or why it is refused.
struct NewValue {
  std::string text;
  std::optional<Message> objection;
};
NewValue new_value(const Setting& setting, const Json& value);

}  // namespace zymdb::service::redfish

#endif
