#include "service/service.h"

#include <algorithm>
#include <utility>

#include "service/page/page.h"
#include "service/redfish/redfish.h"

namespace zymdb::service {
namespace {

constexpr const char* kNames[] = {"metrics", "page", "redfish", "none"};

// What no answer goes without, unless its handler has said otherwise.
constexpr std::pair<const char*, const char*> kHeaders[] = {
    // It may be kept, and has to be asked about.
    {"Cache-Control", "private, no-cache"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
};
constexpr std::pair<const char*, const char*> kWithTls{"Strict-Transport-Security", "max-age=31536000"};

void add_unless_there(Fields& headers, const std::pair<const char*, const char*>& header) {
  if (std::ranges::find(headers, std::string_view(header.first), &Fields::value_type::first) == headers.end())
    headers.emplace_back(header);
}

// It waits for a login, or for the disk.
bool is_write(const Request& request) {
  return !request.is_read() && request.method != Method::kOptions;
}

void finish(const Request& request, Response& response) {
  for (const auto& header : kHeaders) add_unless_there(response.headers, header);
  if (request.is_encrypted) add_unless_there(response.headers, kWithTls);
}

}  // namespace

Service::Service(Current& current, SystemAccounts& accounts, const ServiceOptions& options, Log log)
    : current_(current),
      accounts_(accounts),
      options_(options),
      log_(std::move(log)),
      requests_({std::begin(kNames), std::end(kNames)}),
      routes_(make_routes()) {}

std::vector<Service::Route> Service::make_routes() {
  std::vector<Route> routes;
  const auto add = [&](std::string_view prefix, std::unique_ptr<Handler> handler, Test may_all,
                       Test takes_long) {
    routes.push_back({prefix, kNames[routes.size()], std::move(handler), may_all, takes_long});
  };
  add("/metrics", std::make_unique<Metrics>(current_, requests_, [this] { return gauges(); }), nullptr,
      nullptr);
  add("/", std::make_unique<Page>(current_), Page::is_public, Page::is_slow);
  const RedfishOptions redfish{.may_create_properties = true, .is_read_only = options_.is_read_only};
  add("/redfish", std::make_unique<Redfish>(current_, accounts_, redfish), Redfish::is_public, is_write);
  return routes;
}

Response Service::answer(const Request& request) {
  const auto host = request.header("Host");
  // Another name for this machine in somebody's browser is a page that wants to read what only this machine
  // may.
  if (options_.anonymous_reads && host && !is_loopback_host(*host)) return refuse(421, request);
  const Route* const route = find(request.path);
  Response response = answer_as(request, accounts_.identify(request), route);
  finish(request, response);
  return response;
}

Response Service::refuse(int status, const Request& request) {
  const Route* const route = find(request.path);
  Response response =
      route != nullptr ? route->handler->refuse(status, request) : Handler::refuse(status, request);
  finish(request, response);
  return response;
}

bool Service::is_slow(const Request& request) const {
  const Route* const route = find(request.path);
  return accounts_.has_to_ask(request) ||
         (route != nullptr && route->is_slow != nullptr && route->is_slow(request));
}

void Service::observe(const Request& request, int status, std::chrono::nanoseconds duration) {
  const Route* const route = find(request.path);
  const size_t index = route != nullptr ? static_cast<size_t>(route - routes_.data()) : routes_.size();
  requests_.count(index, request.method, status, duration);
}

const Service::Route* Service::find(std::string_view path) const {
  const Route* longest = nullptr;
  for (const Route& route : routes_) {
    const bool is_below = path.starts_with(route.prefix) &&
                          (route.prefix.ends_with('/') || path.size() == route.prefix.size() ||
                           path[route.prefix.size()] == '/');
    if (is_below && (longest == nullptr || route.prefix.size() > longest->prefix.size())) longest = &route;
  }
  return longest;
}

Response Service::answer_as(Request request, const Identity& identity, const Route* route) {
  request.caller = identity.caller;
  const bool is_public = route != nullptr && route->is_public != nullptr && route->is_public(request);
  switch (identity.kind) {
    case Identity::Kind::kKnown:
      break;
    case Identity::Kind::kLater:
      return with_retry(refuse(429, request));
    case Identity::Kind::kDenied:
      return refuse(403, request);
    case Identity::Kind::kWrong:
      if (!is_public) return unauthorized(request);
      break;
    case Identity::Kind::kNobody:
      if (options_.anonymous_reads && request.is_read()) request.caller.role = Role::kReadOnly;
      if (!is_public && !request.caller.may(Role::kReadOnly)) return unauthorized(request);
  }
  if (route == nullptr) return refuse(404, request);
  return route->handler->answer_or_refuse(request, log_);
}

// A browser would ask in a window of its own, and in the middle of a page that asks itself.
Response Service::unauthorized(const Request& request) {
  Response response = refuse(401, request);
  if (!request.header("X-Requested-With"))
    response.headers.emplace_back("WWW-Authenticate", "Basic realm=\"zymdb\"");
  return response;
}

ServiceGauges Service::gauges() const {
  return {connections_ ? connections_() : 0, accounts_.sessions().size(), accounts_.failed_logins()};
}

}  // namespace zymdb::service
