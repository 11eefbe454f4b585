// What the service does of the protocol.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_FEATURES_H
#define ZYMDB_SERVICE_REDFISH_MODEL_FEATURES_H

#include <chrono>

namespace zymdb::service::redfish {

// The protocol's version.
inline constexpr char kRedfishVersion[] = "1.20.0";

// How far links are followed at most.
inline constexpr unsigned kMostLevels = 6;

// How often the delivery of an event is tried, and after which pause again.
inline constexpr unsigned kDeliveryTries = 3;
inline constexpr std::chrono::seconds kDeliveryPause{30};

// What a try may take, and the pause before the next.
struct DeliveryTimes {
  std::chrono::milliseconds connect = std::chrono::seconds(5);
  std::chrono::milliseconds whole = std::chrono::seconds(10);
  std::chrono::milliseconds pause = kDeliveryPause;
};

}  // namespace zymdb::service::redfish

#endif
