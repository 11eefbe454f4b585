// Resources as JSON, in the order in which their properties were written.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_JSON_H
#define ZYMDB_SERVICE_REDFISH_MODEL_JSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace zymdb::service::redfish {

using Json = nlohmann::ordered_json;

inline constexpr char kJsonType[] = "application/json; charset=utf-8";

// A reference to a resource.
inline Json link(const std::string& path) {
  return {{"@odata.id", path}};
}

// Texts of devices may be any bytes: what is no UTF-8 becomes U+FFFD.
inline std::string text_of(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace zymdb::service::redfish

#endif
