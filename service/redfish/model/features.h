// What the service does of the protocol.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_FEATURES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_FEATURES_H

namespace zymdb::service::redfish {

// The protocol's version.
inline constexpr char kRedfishVersion[] = "1.20.0";

// How far links are followed at most.
inline constexpr unsigned kMostLevels = 6;

}  // namespace zymdb::service::redfish

#endif
