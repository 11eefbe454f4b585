// What the protocol demands of requests' headers.
#ifndef ZYMDB_SERVICE_REDFISH_HEADERS_H
#define ZYMDB_SERVICE_REDFISH_HEADERS_H

#include <string>
#include <string_view>

#include "service/http/message.h"

namespace zymdb::service::redfish {

// Whether an answer of this type ("application/json") may be sent. Everything may where nothing is said.
bool accepts(const Request& request, std::string_view type);

// Whether the body is said to be JSON.
bool has_json(const Request& request);

// Whether one of a header's entity tags, or "*", is this one. Tags are compared without regard to whether
// they are weak, since a compressed answer has a weak one.
bool names_tag(std::string_view header, std::string_view etag);

}  // namespace zymdb::service::redfish

#endif
