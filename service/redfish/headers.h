// What the protocol demands of requests' headers.
#ifndef ZYMDB_SERVICE_REDFISH_HEADERS_H
#define ZYMDB_SERVICE_REDFISH_HEADERS_H

#include <string_view>

#include "service/http/message.h"

namespace zymdb::service::redfish {

// Whether an answer of this type ("application/json") may be sent. Everything may where nothing is said.
bool accepts(const Request& request, std::string_view type);

// Whether the body is said to be JSON.
bool has_json(const Request& request);

}  // namespace zymdb::service::redfish

#endif
