// Who is logged in, and who may see and end it.
#include "service/redfish/redfish_fixture.h"

namespace zymdb::service {
namespace {

class RedfishSessions : public RedfishTest {
 protected:
  Response as(const Json& session, Method method, const std::string& path, Role role) {
    Request wanted = request(method, path);
    wanted.caller = {.user = session["UserName"], .role = role, .session = session["Id"]};
    return ask(wanted);
  }
};

TEST_F(RedfishSessions, BeginWithALogin) {
  const Response response = log_in("reader", "redaer");
  ASSERT_EQ(response.status, 201) << body_of(response);
  const Json session = json_of(response);
  EXPECT_EQ(header_of(response, "X-Auth-Token"), "token of s1");
  EXPECT_EQ(header_of(response, "Location"), session["@odata.id"]);
  EXPECT_EQ(header_of(response, "Cache-Control"), "no-store");
  EXPECT_EQ(session["UserName"], "reader");
  EXPECT_EQ(session["Password"], nullptr);
  EXPECT_EQ(session["Roles"], Json::array({"ReadOnly"}));
  EXPECT_EQ(session["CreatedTime"], "2023-11-14T22:13:21Z");
  EXPECT_EQ(get(session["@odata.id"]).status, 200);
}

TEST_F(RedfishSessions, BeginAtTheMembersToo) {
  Request wanted =
      request(Method::kPost, std::string(kSessionsPath) + "/Members", {{"Content-Type", "application/json"}});
  wanted.body = R"({"UserName":"reader","Password":"redaer"})";
  wanted.caller = {};
  EXPECT_TRUE(Redfish::is_public(wanted));
  const Response response = ask(wanted);
  ASSERT_EQ(response.status, 201) << body_of(response);
  EXPECT_EQ(get(header_of(response, "Location")).status, 200);
  wanted.method = Method::kGet;
  EXPECT_FALSE(Redfish::is_public(wanted));
}

TEST_F(RedfishSessions, AreRefusedWithAReason) {
  EXPECT_EQ(log_in("reader", "wrong").status, 401);
  EXPECT_EQ(header_of(log_in("reader", "wrong"), "WWW-Authenticate"), "Basic realm=\"zymdb\"");
  EXPECT_EQ(message_of(log_in("stranger", "regnarts")), "Base.1.22.AccessUnauthorized");
  EXPECT_EQ(log_in("nobody", "ydobon").status, 403);
  EXPECT_EQ(header_of(log_in("hasty", "ytsah"), "Retry-After"), "30");
  for (size_t i = 0; i < accounts_.most_sessions(); ++i) ASSERT_EQ(log_in("owner", "renwo").status, 201);
  EXPECT_EQ(message_of(log_in("owner", "renwo")), "Base.1.22.SessionLimitExceeded");
}

TEST_F(RedfishSessions, ShowOnlyOnesOwnUnlessOneIsAnAdministrator) {
  const Json reader = json_of(log_in("reader", "redaer")), keeper = json_of(log_in("keeper", "repeek"));
  const Json owner = json_of(log_in("owner", "renwo"));
  const Json own = json_of(as(reader, Method::kGet, kSessionsPath, Role::kReadOnly));
  ASSERT_EQ(own["Members@odata.count"], 1);
  EXPECT_EQ(own["Members"][0]["@odata.id"], reader["@odata.id"]);
  EXPECT_EQ(json_of(as(owner, Method::kGet, kSessionsPath, Role::kAdministrator))["Members@odata.count"], 3);
  EXPECT_EQ(as(reader, Method::kGet, keeper["@odata.id"], Role::kReadOnly).status, 403);
  // Nor by way of an expansion.
  Request expanded = request(Method::kGet, "/redfish/v1/SessionService");
  expanded.caller = {.user = "reader", .role = Role::kReadOnly, .session = {}};
  expanded.query = {{"$expand", ".($levels=2)"}};
  EXPECT_EQ(json_of(ask(expanded))["Sessions"]["Members@odata.count"], 1);
}

TEST_F(RedfishSessions, EndByTheirOwnersOrAdministrators) {
  const Json reader = json_of(log_in("reader", "redaer")), keeper = json_of(log_in("keeper", "repeek"));
  const Json owner = json_of(log_in("owner", "renwo"));
  EXPECT_EQ(as(keeper, Method::kDelete, reader["@odata.id"], Role::kOperator).status, 403);
  EXPECT_EQ(accounts_.sessions().size(), 3u);
  EXPECT_EQ(as(reader, Method::kDelete, reader["@odata.id"], Role::kReadOnly).status, 204);
  EXPECT_EQ(as(owner, Method::kDelete, keeper["@odata.id"], Role::kAdministrator).status, 204);
  EXPECT_EQ(as(owner, Method::kDelete, keeper["@odata.id"], Role::kAdministrator).status, 404);
  EXPECT_EQ(accounts_.sessions().size(), 1u);
}

TEST_F(RedfishSessions, EndOnlyAsTheyWereSeen) {
  const Json reader = json_of(log_in("reader", "redaer"));
  const std::string path = reader["@odata.id"];
  Request remove = request(Method::kDelete, path, {{"If-Match", "\"other\""}});
  EXPECT_EQ(ask(remove).status, 412);
  remove.headers = {{"If-Match", header_of(get(path), "ETag")}};
  EXPECT_EQ(ask(remove).status, 204);
}

TEST_F(RedfishSessions, AreAccountsToo) {
  const Json reader = json_of(log_in("reader", "redaer"));
  log_in("reader", "redaer");
  const std::string accounts = "/redfish/v1/AccountService/Accounts";
  const Json all = json_of(as(reader, Method::kGet, accounts, Role::kReadOnly));
  ASSERT_EQ(all["Members@odata.count"], 1) << all;
  const Json account = json_of(get(all["Members"][0]["@odata.id"]));
  EXPECT_EQ(account["UserName"], "reader");
  EXPECT_EQ(account["RoleId"], "ReadOnly");
  EXPECT_EQ(json_of(get(account["Links"]["Role"]["@odata.id"]))["AssignedPrivileges"],
            Json::array({"Login", "ConfigureSelf"}));
}

}  // namespace
}  // namespace zymdb::service
