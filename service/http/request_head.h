// The head of a request, checked before anybody answers it.
#ifndef ZYMDB_SERVICE_HTTP_REQUEST_HEAD_H
#define ZYMDB_SERVICE_HTTP_REQUEST_HEAD_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "service/http/connections.h"
#include "service/http/message.h"

namespace zymdb::service {

struct RequestHead {
  std::string_view method;
  std::string_view version;
  std::string_view target;
  Fields headers;
};

struct CheckedHead {
  int status = 0;  // 0: the request is good so far
  Request request;
};

// The request without its body, or the status that it is to be refused with. A request that is refused has
// what could be read of it.
CheckedHead check_head(RequestHead head, const Limits& limits);

}  // namespace zymdb::service

#endif
