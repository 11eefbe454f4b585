// What requests change.
#ifndef ZYMDB_SERVICE_REDFISH_WRITES_H
#define ZYMDB_SERVICE_REDFISH_WRITES_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/accounts/accounts.h"
#include "service/http/message.h"
#include "service/redfish/errors.h"
#include "service/redfish/model/json.h"
#include "service/redfish/model/machine.h"

namespace zymdb::service::redfish {

// The object in a request's body, or why there is none.
struct ParsedBody {
  Json object = {};
  std::optional<Response> refusal = {};
};
ParsedBody parse_body(const Request& request);

// Creates a session.
Response log_in(Accounts& accounts, const Request& request);

// What becomes of new values for settings.
struct SettingsOutcome {
  std::optional<Response> refusal = {};  // nothing was saved
  // What was left alone, and why: a property of the resource, or of its attributes.
  std::vector<Message> unchanged = {};
};
// Throws DatabaseError.
SettingsOutcome save_settings(const Machine& machine, const Json& wanted, bool may_create_properties);

}  // namespace zymdb::service::redfish

#endif
