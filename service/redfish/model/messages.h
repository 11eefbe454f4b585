// Messages of the DMTF's registries, as published.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_MESSAGES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_MESSAGES_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "service/redfish/model/json.h"

namespace zymdb::service::redfish {

// The versions that the messages are of.
inline constexpr char kBaseRegistry[] = "Base.1.22.1";
inline constexpr char kEventRegistry[] = "ResourceEvent.1.4.3";

struct RegistryMessage {
  std::string_view key;
  std::string_view severity;
  std::string_view text;  // with %1, %2 … for the arguments
  std::string_view resolution;
};

// Those of the registry "Base" that the service uses.
std::span<const RegistryMessage> base_messages();

// A message with its arguments, and the property that it is about, as a JSON pointer:
// "#/Attributes/BootMode".
struct Message {
  std::string_view key;
  std::vector<std::string> arguments = {};
  std::string property = {};
};

// "Base.1.22.NoValidSession": of any correction of the registry's version.
std::string message_id(const Message& message);
// The published text with the arguments in it.
std::string text_of(const Message& message);
// An object of the type Message.
Json json_of(const Message& message);

}  // namespace zymdb::service::redfish

#endif
