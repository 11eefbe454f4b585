#include "service/redfish/live.h"

#include <algorithm>
#include <utility>

#include "common/text.h"
#include "documents/part_names.h"
#include "service/redfish/destinations.h"
#include "service/redfish/model/names.h"
#include "service/redfish/model/paths.h"
#include "service/redfish/model/roles.h"
#include "service/redfish/model/tree.h"
#include "service/redfish/resources/parts.h"

namespace zymdb::service::redfish {
namespace {

constexpr char kReadOnlyCollection[] = "GET, HEAD";
constexpr char kGrowingCollection[] = "GET, HEAD, POST";

bool is_in(const std::string& path, const std::string& collection) {
  return path == collection || (path.starts_with(collection) && path[collection.size()] == '/');
}

LiveResource live_collection(const std::string& path, const Schema* schema,
                             const std::vector<std::string>& members, const char* allowed) {
  return {.schema = schema, .allowed = allowed, .json = collection(path, *schema, members)};
}

// The accounts of those who are logged in, each once; the highest role that one of its sessions has.
struct Account {
  std::string id;
  std::string user;
  Role role;
};

std::vector<Account> accounts_of(std::vector<LoginSession> sessions) {
  std::ranges::sort(sessions, {}, &LoginSession::user);
  Names names;
  std::vector<Account> accounts;
  for (const LoginSession& session : sessions) {
    if (!accounts.empty() && accounts.back().user == session.user)
      accounts.back().role = std::max(accounts.back().role, session.role);
    else
      accounts.push_back({names.take({session.user}, "Account"), session.user, session.role});
  }
  return accounts;
}

Json account_resource(const Account& account) {
  Json json{{"Name", "Account of " + documents::utf8_text(account.user)},
            {"UserName", documents::utf8_text(account.user)},
            {"Password", nullptr},
            {"Enabled", true},
            {"AccountTypes", Json::array({"Redfish"})}};
  if (const RoleName* const role = name_of(account.role)) {
    json["RoleId"] = role->id;
    json["Links"]["Role"] = link(kRoles + "/" + role->id);
  }
  return resource(kAccounts + "/" + account.id, *schema("ManagerAccount"), std::move(json));
}

// What is posted, and whether it still is.
void add_delivery(Json& json, const Delivery& delivery) {
  json["Name"] = "Posted events";
  if (delivery.dropped > 0)
    json["Description"] = "Messages that were dropped: " + std::to_string(delivery.dropped);
  json["Destination"] = delivery.to.url;
  json["Context"] = delivery.to.context ? Json(*delivery.to.context) : Json();
  json["SubscriptionType"] = "RedfishEvent";
  json["DeliveryRetryPolicy"] = name_of(delivery.to.after_retries);
  json["VerifyCertificate"] = true;
  // They may be secrets.
  json["HttpHeaders"] = Json::array();
  const bool is_warned = delivery.is_suspended || delivery.dropped > 0;
  json["Status"] = status(delivery.is_suspended ? "Disabled" : "Enabled", is_warned);
}

bool may_see(const Caller& caller, const std::string& user) {
  return caller.may(Role::kAdministrator) || (!user.empty() && caller.user == user);
}

}  // namespace

Json session_resource(const LoginSession& session) {
  Json json{{"Name", "Session"},
            {"UserName", documents::utf8_text(session.user)},
            {"Password", nullptr},
            {"SessionType", "Redfish"},
            {"CreatedTime", iso_text(session.created)}};
  if (const RoleName* const role = name_of(session.role)) json["Roles"] = Json::array({role->id});
  return resource(kSessions + "/" + session.id, *schema("Session"), std::move(json));
}

Json subscription_resource(const Subscription& subscription) {
  Json json{{"Name", "Stream of events"}, {"Context", documents::utf8_text(subscription.user)},
            {"Protocol", "Redfish"},      {"SubscriptionType", "SSE"},
            {"EventFormatType", "Event"}, {"RegistryPrefixes", Json::array({"ResourceEvent"})},
            {"Status", status("Enabled")}};
  if (subscription.delivery) add_delivery(json, *subscription.delivery);
  return resource(kSubscriptions + "/" + subscription.id, *schema("EventDestination"), std::move(json));
}

bool Live::may_see(const Caller& caller, const LoginSession& session) {
  return redfish::may_see(caller, session.user);
}

bool Live::has(const std::string& path) {
  return path == kSessionService || is_in(path, kSessions) || is_in(path, kAccounts) ||
         is_in(path, kSubscriptions);
}

std::optional<LiveResource> Live::find(const std::string& path, const Caller& caller) const {
  if (path == kSessionService) {
    return LiveResource{.schema = schema("SessionService"),
                        .json = resource(path, *schema("SessionService"),
                                         {{"Name", "Sessions"},
                                          {"Status", status("Enabled")},
                                          {"ServiceEnabled", true},
                                          {"SessionTimeout", accounts_.idle_limit().count()},
                                          {"Sessions", link(kSessions)}})};
  }
  if (is_in(path, kSessions)) return find_session(path, caller);
  if (is_in(path, kAccounts)) return find_account(path, caller);
  return find_subscription(path, caller);
}

std::vector<LoginSession> Live::sessions_for(const Caller& caller) const {
  std::vector<LoginSession> sessions = accounts_.sessions();
  std::erase_if(sessions, [&](const LoginSession& session) { return !may_see(caller, session); });
  std::ranges::sort(sessions, {}, [](const LoginSession& each) { return std::pair(each.created, each.id); });
  return sessions;
}

std::optional<LiveResource> Live::find_session(const std::string& path, const Caller& caller) const {
  if (path == kSessions) {
    std::vector<std::string> members;
    for (const LoginSession& session : sessions_for(caller)) members.push_back(kSessions + "/" + session.id);
    return live_collection(path, schema("SessionCollection"), members, kGrowingCollection);
  }
  const auto session = accounts_.session(path.substr(kSessions.size() + 1));
  if (!session) return {};
  return LiveResource{.schema = schema("Session"),
                      .allowed = "GET, HEAD, DELETE",
                      .json = session_resource(*session),
                      .is_of_others = !may_see(caller, *session)};
}

std::optional<LiveResource> Live::find_account(const std::string& path, const Caller& caller) const {
  std::vector<std::string> members;
  // Whoever asks without a session is an account all the same.
  auto sessions = accounts_.sessions();
  if (!caller.user.empty()) sessions.push_back({.id = "", .user = caller.user, .role = caller.role});
  for (const Account& account : accounts_of(std::move(sessions))) {
    const bool is_of_others = !redfish::may_see(caller, account.user);
    const std::string own_path = kAccounts + "/" + account.id;
    if (own_path == path)
      return LiveResource{.schema = schema("ManagerAccount"),
                          .json = account_resource(account),
                          .is_of_others = is_of_others};
    if (!is_of_others) members.push_back(own_path);
  }
  if (path != kAccounts) return {};
  return live_collection(path, schema("ManagerAccountCollection"), members, kReadOnlyCollection);
}

std::optional<LiveResource> Live::find_subscription(const std::string& path, const Caller& caller) const {
  std::vector<std::string> members;
  for (const Subscription& subscription : events_.subscriptions()) {
    const bool is_of_others = !redfish::may_see(caller, subscription.user);
    const std::string own_path = kSubscriptions + "/" + subscription.id;
    if (own_path == path)
      return LiveResource{.schema = schema("EventDestination"),
                          .allowed = subscription.delivery ? "GET, HEAD, PATCH, DELETE" : "GET, HEAD, DELETE",
                          .json = subscription_resource(subscription),
                          .is_of_others = is_of_others};
    if (!is_of_others) members.push_back(own_path);
  }
  if (path != kSubscriptions) return {};
  return live_collection(path, schema("EventDestinationCollection"), members, kGrowingCollection);
}

}  // namespace zymdb::service::redfish
