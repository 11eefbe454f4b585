// Resources that are made of who is logged in and who listens, rather than of the inventory.
#ifndef ZYMDB_SERVICE_REDFISH_LIVE_H
#define ZYMDB_SERVICE_REDFISH_LIVE_H

#include <optional>
#include <string>

#include "service/accounts/accounts.h"
#include "service/redfish/events.h"
#include "service/redfish/model/json.h"
#include "service/redfish/model/schemas.h"

namespace zymdb::service::redfish {

// One of them, as whoever asks may see it.
struct LiveResource {
  const Schema* schema = nullptr;
  const char* allowed = "GET, HEAD";
  Json json = {};
  bool is_of_others = false;  // who asks may not see it
};

class Live {
 public:
  Live(Accounts& accounts, Events& events) : accounts_(accounts), events_(events) {}

  // Whether the path is one of theirs, whatever is there.
  static bool has(const std::string& path);
  // Nothing where nothing is.
  std::optional<LiveResource> find(const std::string& path, const Caller& caller) const;

  // Its own; an administrator sees all.
  static bool may_see(const Caller& caller, const LoginSession& session);

 private:
  std::vector<LoginSession> sessions_for(const Caller& caller) const;
  std::optional<LiveResource> find_session(const std::string& path, const Caller& caller) const;
  std::optional<LiveResource> find_account(const std::string& path, const Caller& caller) const;
  std::optional<LiveResource> find_subscription(const std::string& path, const Caller& caller) const;

  Accounts& accounts_;
  Events& events_;
};

Json session_resource(const LoginSession& session);
Json subscription_resource(const Subscription& subscription);

}  // namespace zymdb::service::redfish

#endif
