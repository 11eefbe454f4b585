// What a request is for, out of its first line.
#ifndef ZYMDB_SERVICE_HTTP_TARGET_H
#define ZYMDB_SERVICE_HTTP_TARGET_H

#include <optional>
#include <string>
#include <string_view>

#include "service/http/message.h"

namespace zymdb::service {

struct Target {
  std::string path;
  Fields query;
};

// Percent-decoded; "+" is a blank in a query. Nothing for what is no path ("*", a relative one), for escapes
// that are none, for control characters, for what is not UTF-8, and for "." and ".." as a step of the path.
std::optional<Target> parse_target(std::string_view text);

// The user and the password of "Basic …"; nothing for anything else, also for names and passwords with a NUL
// in them.
struct Credentials {
  std::string user;
  std::string password;
};
std::optional<Credentials> parse_basic(std::string_view authorization);

// Whether a Host header names a host, perhaps with a port.
bool is_host(std::string_view text);
// Whether that host is this machine, under a name that no other machine's name can lead to.
bool is_loopback_host(std::string_view text);

}  // namespace zymdb::service

#endif
