// What the protocol demands of every answer.
#include "service/redfish/errors.h"
#include "service/redfish/model/names.h"
#include "service/redfish/redfish_fixture.h"

namespace zymdb::service {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class RedfishProtocol : public RedfishTest {
 protected:
  RedfishProtocol() { collect_example(); }
};

TEST_F(RedfishProtocol, TellsItsVersionAndItsRootToAnybody) {
  for (const char* const path : {"/redfish", "/redfish/", "/redfish/v1", "/redfish/v1/", "/redfish/v1/odata",
                                 "/redfish/v1/$metadata"}) {
    Request anybody = request(Method::kGet, path);
    anybody.caller = {};
    EXPECT_EQ(ask(anybody).status, 200) << path;
  }
  EXPECT_EQ(json_of(get("/redfish")), (Json{{"v1", "/redfish/v1/"}}));
  EXPECT_EQ(json_of(get("/redfish/v1"))["@odata.id"], "/redfish/v1/");
}

TEST_F(RedfishProtocol, TellsNothingElseToWhoeverIsNotLoggedIn) {
  for (const char* const path : {kSystemPath, kSessionsPath, "/redfish/v1/nothing", kStreamPath,
                                 "/redfish/v1/AccountService/Accounts"}) {
    Request anybody = request(Method::kGet, path);
    anybody.caller = {};
    const Response response = ask(anybody);
    EXPECT_EQ(response.status, 401) << path;
    EXPECT_EQ(message_of(response), "Base.1.22.NoValidSession") << path;
  }
}

TEST_F(RedfishProtocol, PutsTheServiceInItsMetadata) {
  const Response response = get("/redfish/v1/$metadata");
  EXPECT_THAT(header_of(response, "Content-Type"), StartsWith("application/xml"));
  EXPECT_THAT(body_of(response), HasSubstr("<edmx:Include Namespace=\"ComputerSystem.v1_27_0\"/>"));
  EXPECT_THAT(body_of(response), HasSubstr("EntityContainer Name=\"Service\" Extends=\"ServiceRoot."));
  const Json service = json_of(get("/redfish/v1/odata"));
  EXPECT_EQ(service["@odata.context"], "/redfish/v1/$metadata");
  for (const Json& each : service["value"]) {
    EXPECT_EQ(each["kind"], "Singleton");
    EXPECT_EQ(get(each["url"]).status, 200) << each;
  }
}

// A request, and what it is answered.
struct Case {
  const char* what;
  Request request;
  int status;
  const char* message = "";  // of the Base registry; empty: no error
};

Request of(Method method, const std::string& path, Fields query = {}, Fields headers = {},
           std::string body = "") {
  return {.method = method,
          .path = path,
          .query = std::move(query),
          .headers = std::move(headers),
          .body = std::move(body),
          .caller = {.user = "somebody", .role = Role::kAdministrator, .session = {}}};
}

TEST_F(RedfishProtocol, AnswersEachRequestAsItIsToBe) {
  const std::string memory = std::string(kSystemPath) + "/Memory";
  const std::string systems = "/redfish/v1/Systems";
  const Fields json{{"Content-Type", "application/json"}};
  const Case cases[] = {
      {"what is not there", of(Method::kGet, "/redfish/v1/Systems/2"), 404, "ResourceMissingAtURI"},
      {"a folder above", of(Method::kGet, "/redfish/v1/Systems/../Systems"), 404, "ResourceMissingAtURI"},
      {"two slashes", of(Method::kGet, "/redfish/v1//Systems"), 404, "ResourceMissingAtURI"},
      {"another protocol version", of(Method::kGet, "/redfish/v2"), 404, "ResourceMissingAtURI"},
      {"a slash at the end", of(Method::kGet, "/redfish/v1/Systems/1/"), 200},
      {"HEAD", of(Method::kHead, kSystemPath), 200},
      {"PUT", of(Method::kPut, kSystemPath), 405, "OperationNotAllowed"},
      {"PATCH of what cannot be changed", of(Method::kPatch, kSystemPath, {}, json, "{}"), 405,
       "OperationNotAllowed"},
      {"POST to a collection of parts", of(Method::kPost, memory, {}, json, "{}"), 405,
       "OperationNotAllowed"},
      {"DELETE of a part", of(Method::kDelete, kSystemPath), 405, "OperationNotAllowed"},
      {"DELETE of the versions", of(Method::kDelete, "/redfish"), 405, "OperationNotAllowed"},
      {"a subscription that is no JSON",
       of(Method::kPost, "/redfish/v1/EventService/Subscriptions", {}, json, "{"), 400, "MalformedJSON"},
      {"a subscription in another type",
       of(Method::kPost, "/redfish/v1/EventService/Subscriptions", {}, {{"Content-Type", "text/plain"}},
          "{}"),
       415, "HeaderInvalid"},
      {"a method of no kind", of(Method::kOther, kSystemPath), 501, "OperationNotAllowed"},
      {"the protocol's OData version", of(Method::kGet, kSystemPath, {}, {{"OData-Version", "4.0"}}), 200},
      {"another OData version", of(Method::kGet, kSystemPath, {}, {{"odata-version", "4.1"}}), 412,
       "HeaderInvalid"},
      {"an accepted type",
       of(Method::kGet, kSystemPath, {}, {{"Accept", "text/html, application/json;q=0.9"}}), 200},
      {"any type", of(Method::kGet, kSystemPath, {}, {{"Accept", "*/*"}}), 200},
      {"another type", of(Method::kGet, kSystemPath, {}, {{"Accept", "text/html"}}), 406, "HeaderInvalid"},
      {"metadata as JSON", of(Method::kGet, "/redfish/v1/$metadata", {}, {{"Accept", "application/json"}}),
       406, "HeaderInvalid"},
      {"a login in another type",
       of(Method::kPost, kSessionsPath, {}, {{"Content-Type", "text/plain"}}, R"({"UserName":"a"})"), 415,
       "HeaderInvalid"},
      {"a login of no type", of(Method::kPost, kSessionsPath, {}, {}, R"({"UserName":"a"})"), 415,
       "HeaderInvalid"},
      {"a login that is no JSON", of(Method::kPost, kSessionsPath, {}, json, "{"), 400, "MalformedJSON"},
      {"a login that is no object", of(Method::kPost, kSessionsPath, {}, json, "[1]"), 400,
       "UnrecognizedRequestBody"},
      {"a login without a password", of(Method::kPost, kSessionsPath, {}, json, R"({"UserName":"a"})"), 400,
       "PropertyMissing"},
      {"a login with a number for a name",
       of(Method::kPost, kSessionsPath, {}, json, R"({"UserName":1,"Password":"a"})"), 400,
       "PropertyValueTypeError"},
      {"an unknown parameter", of(Method::kGet, kSystemPath, {{"wheels", "4"}}), 200},
      {"an unknown parameter of the protocol", of(Method::kGet, kSystemPath, {{"$wheels", "4"}}), 501,
       "QueryParameterUnsupported"},
      {"a filter", of(Method::kGet, memory, {{"$filter", "CapacityMiB eq 1"}}), 501,
       "QueryParameterUnsupported"},
      {"an expansion of no kind", of(Method::kGet, memory, {{"$expand", "x"}}), 400,
       "QueryParameterValueFormatError"},
      {"an expansion of no levels", of(Method::kGet, memory, {{"$expand", ".($levels=0)"}}), 400,
       "QueryParameterValueFormatError"},
      {"an expansion of too many levels", of(Method::kGet, memory, {{"$expand", ".($levels=7)"}}), 400,
       "QueryParameterOutOfRange"},
      {"an expansion that does not end", of(Method::kGet, memory, {{"$expand", ".($levels=1"}}), 400,
       "QueryParameterValueFormatError"},
      {"a selection of nothing", of(Method::kGet, kSystemPath, {{"$select", ""}}), 400,
       "QueryParameterValueFormatError"},
      {"a page of words", of(Method::kGet, memory, {{"$top", "many"}}), 400,
       "QueryParameterValueFormatError"},
      {"a page before the first", of(Method::kGet, memory, {{"$skip", "-1"}}), 400,
       "QueryParameterValueFormatError"},
      {"a page of what is no collection", of(Method::kGet, kSystemPath, {{"$top", "1"}}), 400,
       "QueryNotSupportedOnResource"},
      {"the only one of what is no collection", of(Method::kGet, kSystemPath, {{"only", ""}}), 400,
       "QueryNotSupportedOnResource"},
      {"the only one with a value", of(Method::kGet, systems, {{"only", "1"}}), 400,
       "QueryParameterValueFormatError"},
      {"a page of the only one", of(Method::kGet, systems, {{"only", ""}, {"$top", "1"}}), 400,
       "QueryCombinationInvalid"},
      {"a login to the members",
       of(Method::kPost, std::string(kSessionsPath) + "/Members", {}, json,
          R"({"UserName":"reader","Password":"redaer"})"),
       201},
      {"options where something is made", of(Method::kPost, kSessionsPath, {{"$expand", "."}}, json, "{}"),
       400, "QueryNotSupportedOnOperation"},
      {"an option twice", of(Method::kGet, memory, {{"$top", "1"}, {"$top", "2"}}), 400,
       "QueryCombinationInvalid"},
  };
  for (const Case& each : cases) {
    const Response response = ask(each.request);
    EXPECT_EQ(response.status, each.status) << each.what << ": " << body_of(response).substr(0, 300);
    EXPECT_EQ(header_of(response, "OData-Version"), "4.0") << each.what;
    EXPECT_NE(header_of(response, "Cache-Control"), "") << each.what;
    if (*each.message != '\0') {
      EXPECT_EQ(message_of(response), std::string("Base.1.22.") + each.message) << each.what;
    }
    if (each.status == 405) {
      EXPECT_THAT(header_of(response, "Allow"), HasSubstr("GET")) << each.what;
    }
  }
}

TEST_F(RedfishProtocol, AnswersHeadLikeGet) {
  const Response got = get(kSystemPath), head = ask(request(Method::kHead, kSystemPath));
  EXPECT_EQ(got.headers, head.headers);
  EXPECT_EQ(body_of(got), body_of(head));
}

TEST_F(RedfishProtocol, SendsNothingAgainThatIsKnown) {
  const std::string etag = header_of(get(kSystemPath), "ETag");
  ASSERT_THAT(etag, testing::MatchesRegex("\"[0-9a-f]{16}\""));
  for (const std::string& known : {etag, "\"other\", " + etag, "W/" + etag, std::string("*")}) {
    const Response response = get(kSystemPath, {}, {{"If-None-Match", known}});
    EXPECT_EQ(response.status, 304) << known;
    EXPECT_EQ(response.body, nullptr);
    EXPECT_EQ(header_of(response, "ETag"), etag);
  }
  EXPECT_EQ(get(kSystemPath, {}, {{"If-None-Match", "\"other\""}}).status, 200);
}

TEST_F(RedfishProtocol, ChangesTheTagWithTheResourceAlone) {
  const std::string chassis = "/redfish/v1/Chassis/1/PCIeDevices/Slot-1";
  const std::string of_system = header_of(get(kSystemPath), "ETag"),
                    of_device = header_of(get(chassis), "ETag");
  set_serial("another");
  EXPECT_NE(header_of(get(kSystemPath), "ETag"), of_system);
  EXPECT_EQ(json_of(get(kSystemPath))["SerialNumber"], "another");
  EXPECT_EQ(header_of(get(chassis), "ETag"), of_device);
}

TEST_F(RedfishProtocol, KeepsWhatItWroteUntilTheInventoryChanges) {
  const Response first = get(kSystemPath), second = get(kSystemPath);
  EXPECT_EQ(first.body, second.body);  // the same object
  const Response expanded = get(kSystemPath, {{"$expand", "."}});
  EXPECT_EQ(expanded.body, get(kSystemPath, {{"$expand", ".($levels=1)"}}).body);
  EXPECT_NE(expanded.body, first.body);
}

TEST_F(RedfishProtocol, ExpandsLinksOfTheKindThatIsAskedFor) {
  const Json own = json_of(get(kSystemPath, {{"$expand", "."}}));
  EXPECT_EQ(own["Memory"]["Members@odata.count"], 32);
  EXPECT_EQ(own["Links"]["Chassis"][0].size(), 1u);
  const Json linked = json_of(get(kSystemPath, {{"$expand", "~"}}));
  EXPECT_EQ(linked["Memory"].size(), 1u);
  EXPECT_EQ(linked["Links"]["Chassis"][0]["ChassisType"], "Other");
  const Json all = json_of(get(kSystemPath, {{"$expand", "*"}}));
  EXPECT_EQ(all["Memory"]["Members@odata.count"], 32);
  EXPECT_EQ(all["Links"]["Chassis"][0]["ChassisType"], "Other");
}

TEST_F(RedfishProtocol, ExpandsAsFarAsItIsTold) {
  const Json one = json_of(get(kSystemPath, {{"$expand", ".($levels=1)"}}));
  EXPECT_EQ(one["Memory"]["Members"][0].size(), 1u);
  const Json two = json_of(get(kSystemPath, {{"$expand", ".($levels=2)"}}));
  EXPECT_EQ(two["Memory"]["Members"][0]["MemoryDeviceType"], "DDR4");
}

TEST_F(RedfishProtocol, RefusesAnExpansionThatIsTooLarge) {
  const Response response = get(kRootPath, {{"$expand", "*($levels=6)"}});
  EXPECT_EQ(response.status, 507);
  EXPECT_EQ(message_of(response), "Base.1.22.InsufficientStorage");
}

TEST_F(RedfishProtocol, NeverExpandsAResourceWithinItself) {
  const Json chassis = json_of(get("/redfish/v1/Chassis/1", {{"$expand", "*($levels=2)"}}));
  EXPECT_EQ(chassis["Links"]["ComputerSystems"][0]["Links"]["Chassis"][0].size(), 1u);
}

TEST_F(RedfishProtocol, SelectsWhatIsAskedFor) {
  const Json chosen = json_of(get(kSystemPath, {{"$select", "Model,ProcessorSummary/Count,Wheels"}}));
  EXPECT_EQ(chosen["Model"], "ES-2240 Two-Socket Server");
  EXPECT_EQ(chosen["ProcessorSummary"], (Json{{"Count", 2}}));
  EXPECT_TRUE(chosen.contains("@odata.id") && chosen.contains("@odata.etag") &&
              chosen.contains("@odata.type"));
  EXPECT_EQ(chosen.size(), 5u) << chosen;
  const Json members =
      json_of(get(std::string(kSystemPath) + "/Memory", {{"$expand", "."}, {"$select", "CapacityMiB"}}));
  EXPECT_EQ(members["Members"].size(), 32u);
  EXPECT_EQ(members["Members"][0]["CapacityMiB"], 65536);
  EXPECT_FALSE(members["Members"][0].contains("Name"));
}

TEST_F(RedfishProtocol, LeadsFromPageToPage) {
  const std::string memory = std::string(kSystemPath) + "/Memory";
  const Json whole = json_of(get(memory));
  Json collected = Json::array();
  Fields query{{"$top", "10"}};
  for (int pages = 1;; ++pages) {
    ASSERT_LE(pages, 4);
    const Json page = json_of(get(memory, query));
    EXPECT_EQ(page["Members@odata.count"], 32);
    for (const Json& member : page["Members"]) collected.push_back(member);
    if (!page.contains("Members@odata.nextLink")) break;
    const std::string next = page["Members@odata.nextLink"];
    ASSERT_THAT(next, StartsWith(memory + "?$skip="));
    const size_t from = next.find("$skip=") + 6;
    query = {{"$skip", next.substr(from, next.find('&') - from)},
             {"$top", next.substr(next.find("$top=") + 5)}};
  }
  EXPECT_EQ(collected, whole["Members"]);
  const Json none = json_of(get(memory, {{"$top", "0"}}));
  EXPECT_TRUE(none["Members"].empty() && !none.contains("Members@odata.nextLink")) << none;
  EXPECT_TRUE(json_of(get(memory, {{"$skip", "99999999999"}}))["Members"].empty());
}

TEST_F(RedfishProtocol, GivesTheOnlyMemberWhereThereIsOne) {
  EXPECT_EQ(json_of(get("/redfish/v1/Systems", {{"only", ""}}))["@odata.id"], kSystemPath);
  EXPECT_EQ(json_of(get(std::string(kSystemPath) + "/Memory", {{"only", ""}}))["Members@odata.count"], 32);
}

TEST_F(RedfishProtocol, AsksForPatienceWhileTheInventoryCannotBeRead) {
  lose_database();
  const Response response = get(kSystemPath);
  EXPECT_EQ(response.status, 503);
  EXPECT_EQ(message_of(response), "Base.1.22.ServiceTemporarilyUnavailable");
  EXPECT_EQ(header_of(response, "Retry-After"), "5");
  EXPECT_THAT(log_.lines(), testing::ElementsAre(StartsWith("cannot read the inventory: ")));
}

TEST(RedfishErrors, SayForEachStatusWhatIsTheMatter) {
  EXPECT_EQ(message_of(redfish::error_response(401)), "Base.1.22.NoValidSession");
  EXPECT_EQ(message_of(redfish::error_response(404, "/x")), "Base.1.22.ResourceMissingAtURI");
  EXPECT_THAT(body_of(redfish::error_response(404, "/x")), HasSubstr("'/x'"));
  EXPECT_EQ(message_of(redfish::error_response(413)), "Base.1.22.PayloadTooLarge");
  EXPECT_EQ(message_of(redfish::error_response(418)), "Base.1.22.GeneralError");
  EXPECT_EQ(message_of(redfish::error_response(599)), "Base.1.22.InternalError");
  const Json several = json_of(redfish::error_with(400, {{"MalformedJSON"}, {"PropertyUnknown", {"a%1"}}}));
  EXPECT_EQ(several["error"]["code"], "Base.1.22.GeneralError");
  EXPECT_EQ(several["error"]["@Message.ExtendedInfo"].size(), 2u);
  EXPECT_THAT(several["error"]["@Message.ExtendedInfo"][1]["Message"], StartsWith("The property a%1 is not"));
}

TEST(RedfishNames, AreSafeInPathsAndTellPartsApart) {
  using redfish::Names;
  using redfish::path_segment;
  EXPECT_EQ(path_segment("CPU 1/2?#%"), "CPU-1-2");
  EXPECT_EQ(path_segment(".."), "");
  EXPECT_EQ(path_segment("\xff\xfe"), "");
  EXPECT_EQ(path_segment(std::string(500, 'x')).size(), 64u);
  Names names;
  EXPECT_EQ(names.take({"Bay 1"}, "Drive"), "Bay-1");
  EXPECT_EQ(names.take({"Bay 1"}, "Drive"), "Bay-1-2");
  EXPECT_EQ(names.take({"Bay 1", "Other"}, "Drive"), "Other");
  EXPECT_EQ(names.take({"", "  "}, "Drive"), "Drive");
  EXPECT_EQ(names.take({""}, "Drive"), "Drive-2");
}

}  // namespace
}  // namespace zymdb::service
