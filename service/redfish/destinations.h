// What is asked of a subscription, and whether it can be.
#ifndef ZYMDB_SERVICE_REDFISH_DESTINATIONS_H
#define ZYMDB_SERVICE_REDFISH_DESTINATIONS_H

#include <vector>

#include "service/redfish/deliveries.h"
#include "service/redfish/model/json.h"
#include "service/redfish/model/messages.h"

namespace zymdb::service::redfish {

// Of a new one. Any objection is one to all of it.
struct WantedDestination {
  Destination destination = {};
  std::vector<Message> objections = {};
};
WantedDestination wanted_destination(const Json& wanted);

// Of one that is there.
struct WantedChange {
  DestinationChange change = {};
  std::vector<Message> objections = {};  // to values: nothing is changed then
  std::vector<Message> unchanged = {};   // properties that cannot be changed
};
WantedChange wanted_change(const Json& wanted);

// "SuspendRetries".
const char* name_of(AfterRetries after_retries);

}  // namespace zymdb::service::redfish

#endif
