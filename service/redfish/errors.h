// What requests are refused with: messages of the DMTF's Base registry, as published.
#ifndef ZYMDB_SERVICE_REDFISH_ERRORS_H
#define ZYMDB_SERVICE_REDFISH_ERRORS_H

#include <string_view>
#include <vector>

#include "service/http/message.h"
#include "service/redfish/model/messages.h"

namespace zymdb::service::redfish {

// An error object. Several messages stand side by side.
Response error_with(int status, const std::vector<Message>& messages);

// What a status by itself tells, for whoever refuses a request before it is a question of resources.
// `argument` is what the message is about: a path that is not there, a header.
Response error_response(int status, std::string_view argument = {});

// Whoever cannot be answered now may ask again after so many seconds.
Response busy_response(int status, unsigned seconds = kRetrySeconds);

}  // namespace zymdb::service::redfish

#endif
