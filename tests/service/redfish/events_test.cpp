// What becomes of the inventory, told to those who listen.
#include "service/redfish/events.h"

#include <chrono>
#include <thread>

#include "service/redfish/redfish_fixture.h"

namespace zymdb::service {
namespace {

using testing::HasSubstr;

constexpr char kSubscriptionsPath[] = "/redfish/v1/EventService/Subscriptions";

class RedfishEvents : public RedfishTest {
 protected:
  RedfishEvents() { collect_example(); }

  std::shared_ptr<Stream> listen() { return get(kStreamPath, {}, {{"Accept", "text/event-stream"}}).stream; }

  // What the stream says within a while; fails the test where that is nothing.
  static std::string heard(Stream& stream) {
    for (int tries = 0; tries < 50; ++tries) {
      const std::string text = stream.take();
      if (!text.empty()) return text;
    }
    ADD_FAILURE() << "nothing is heard";
    return "";
  }

  // The events of a message: "ResourceChanged /redfish/v1/Systems/1".
  static std::vector<std::string> events_of(const std::string& message) {
    const size_t data = message.find("data: ");
    const Json json = Json::parse(message.substr(data + 6, message.find("\n\n") - data - 6));
    std::vector<std::string> events;
    for (const Json& event : json["Events"]) {
      const std::string id = event["MessageId"];
      events.push_back(id.substr(id.rfind('.') + 1) + " " +
                       event["OriginOfCondition"]["@odata.id"].get<std::string>());
    }
    return events;
  }
};

TEST_F(RedfishEvents, TellWhichResourceHasChanged) {
  const auto stream = listen();
  ASSERT_NE(stream, nullptr);
  set_serial("another");
  const std::string message = heard(*stream);
  EXPECT_THAT(message, testing::StartsWith("id: 1\ndata: {"));
  EXPECT_THAT(message, testing::EndsWith("}\n\n"));
  EXPECT_THAT(events_of(message), testing::ElementsAre("ResourceChanged /redfish/v1/Systems/1"));
  EXPECT_THAT(message, HasSubstr("\"MessageId\":\"ResourceEvent.1.4.ResourceChanged\""));
}

TEST_F(RedfishEvents, TellWhatIsNewAndWhatIsGone) {
  const auto stream = listen();
  ASSERT_EQ(zym_db_delete(get_dmdb_handle(), "Processor", "_id=2", nullptr, 0, nullptr), 0);
  EXPECT_THAT(events_of(heard(*stream)),
              testing::ElementsAre("ResourceRemoved /redfish/v1/Systems/1/Processors/CPU2"));
  collect_example();
  EXPECT_THAT(events_of(heard(*stream)),
              testing::Contains("ResourceCreated /redfish/v1/Systems/1/Processors/CPU2"));
}

TEST_F(RedfishEvents, ReachEverybodyWhoListensFromThenOn) {
  const auto first = listen();
  set_serial("one");
  EXPECT_THAT(heard(*first), HasSubstr("ResourceChanged"));
  const auto second = listen();
  EXPECT_EQ(second->take(), "");
  set_serial("two");
  EXPECT_THAT(heard(*second), HasSubstr("ResourceChanged"));
  EXPECT_THAT(heard(*first), HasSubstr("ResourceChanged"));
}

TEST_F(RedfishEvents, SayNothingOfWhatHappenedWhileNobodyListened) {
  listen();
  set_serial("unheard");
  EXPECT_EQ(listen()->take(), "");
}

TEST_F(RedfishEvents, AreSubscriptionsThatEndWithTheStream) {
  auto stream = listen();
  const Json all = json_of(get(kSubscriptionsPath));
  ASSERT_EQ(all["Members@odata.count"], 1);
  const Json own = json_of(get(all["Members"][0]["@odata.id"]));
  EXPECT_EQ(own["SubscriptionType"], "SSE");
  stream.reset();
  EXPECT_EQ(json_of(get(kSubscriptionsPath))["Members@odata.count"], 0);
}

TEST_F(RedfishEvents, EndWithTheirSubscription) {
  const auto stream = listen();
  const std::string path = json_of(get(kSubscriptionsPath))["Members"][0]["@odata.id"];
  EXPECT_FALSE(stream->is_over());
  EXPECT_EQ(ask(request(Method::kDelete, path)).status, 204);
  EXPECT_TRUE(stream->is_over());
  EXPECT_EQ(get(path).status, 404);
}

TEST_F(RedfishEvents, EndWithTheService) {
  const auto stream = listen();
  redfish_.reset();
  EXPECT_EQ(stream->take(), "");
  EXPECT_TRUE(stream->is_over());
}

TEST_F(RedfishEvents, AreForSoManyAtMost) {
  std::vector<std::shared_ptr<Stream>> streams;
  for (size_t i = 0; i < redfish::Events::kMostStreams; ++i)
    ASSERT_NE(streams.emplace_back(listen()), nullptr);
  const Response response = get(kStreamPath);
  EXPECT_EQ(response.status, 503);
  EXPECT_EQ(message_of(response), "Base.1.22.EventSubscriptionLimitExceeded");
  streams.pop_back();
  EXPECT_NE(listen(), nullptr);
}

TEST_F(RedfishEvents, SayThatSomeWereDroppedWhereNobodyTakesThem) {
  const auto stream = listen();
  for (int i = 0; i < 200; ++i)
    ASSERT_EQ(
        send(Method::kPost, "/redfish/v1/EventService/Actions/EventService.SubmitTestEvent", "{}").status,
        204);
  const std::string text = heard(*stream);
  EXPECT_THAT(text, HasSubstr("Base.1.22.EventBufferExceeded"));
  EXPECT_THAT(text, HasSubstr("ResourceEvent.1.4.TestMessage"));
  EXPECT_LT(text.size(), 100'000u);
}

TEST_F(RedfishEvents, AreTestedByAdministratorsAlone) {
  const auto stream = listen();
  const char* const path = "/redfish/v1/EventService/Actions/EventService.SubmitTestEvent";
  EXPECT_EQ(send(Method::kPost, path, "{}", Role::kOperator).status, 403);
  EXPECT_EQ(stream->take(), "");
  EXPECT_EQ(send(Method::kPost, path, "{}").status, 204);
  EXPECT_THAT(heard(*stream), HasSubstr("Test message."));
}

TEST_F(RedfishEvents, AreNoneForThoseWhoWantAnotherType) {
  EXPECT_EQ(get(kStreamPath, {}, {{"Accept", "application/json"}}).status, 406);
  EXPECT_EQ(ask(request(Method::kHead, kStreamPath)).stream, nullptr);
}

}  // namespace
}  // namespace zymdb::service
