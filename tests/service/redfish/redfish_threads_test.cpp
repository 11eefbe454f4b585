// Many who ask while the inventory changes: every answer is of one moment.
#include <atomic>

#include "service/redfish/event_receiver.h"
#include "service/redfish/redfish_fixture.h"
#include "threads/in_threads.h"

namespace zymdb::service {
namespace {

class RedfishThreads : public RedfishTest {};

TEST_F(RedfishThreads, AnswerEachRequestFromOneMoment) {
  collect_example();
  constexpr int kRounds = 15;
  std::atomic<int> newest = 0;
  in_threads([&](int thread) {
    std::shared_ptr<Stream> stream = thread == 1 ? get(kStreamPath).stream : nullptr;
    for (int round = 1; round <= kRounds; ++round) {
      if (thread == 0) {
        set_serial(std::to_string(round));
        newest = round;
        continue;
      }
      const int known = newest;
      const Json json = json_of(get("/redfish/v1", {{"$expand", ".($levels=2)"}}));
      // The system and the chassis have one serial number, and none that is older than what was written
      // before.
      const Json &system = json["Systems"]["Members"][0], &chassis = json["Chassis"]["Members"][0];
      ASSERT_EQ(system["SerialNumber"], chassis["SerialNumber"]);
      const std::string serial = system["SerialNumber"];
      ASSERT_GE(known > 0 ? std::stoi(serial) : known, known);
      if (thread == 2) log_in("reader", "redaer");
      if (thread == 3) {
        for (const LoginSession& session : accounts_.sessions())
          ask(request(Method::kDelete, std::string(kSessionsPath) + "/" + session.id));
      }
      if (stream != nullptr) stream->take();
      get("/redfish/v1/EventService/Subscriptions");
    }
  });
}

// Whoever subscribes, changes and ends subscriptions at once: each is told of what happens, or is gone.
TEST_F(RedfishThreads, DeliverWhileSubscriptionsComeAndGo) {
  collect_example();
  const std::string all = "/redfish/v1/EventService/Subscriptions";
  const std::string test_event = "/redfish/v1/EventService/Actions/EventService.SubmitTestEvent";
  EventReceiver receiver, other;
  other.answer_with({500});
  const auto subscribe = [&](const std::string& url) {
    return send(Method::kPost, all, Json{{"Destination", url}, {"Protocol", "Redfish"}}.dump());
  };
  const std::string kept = header_of(subscribe(receiver.url()), "Location");
  in_threads([&](int thread) {
    for (int round = 0; round < 10; ++round) {
      if (thread == 0) set_serial("of round " + std::to_string(round));
      if (thread == 1) send(Method::kPost, test_event, "{}");
      if (thread == 2) send(Method::kPatch, kept, R"({"Context":"another"})");
      get(all, {{"$expand", "."}});
      if (thread < 3) continue;
      const Response made = subscribe(other.url());
      ASSERT_TRUE(made.status == 201 || made.status == 507) << made.status;
      if (made.status == 201) ask(request(Method::kDelete, header_of(made, "Location")));
    }
  });
  EXPECT_GE(receiver.received(10).size(), 10u);
  EXPECT_EQ(json_of(get(all))["Members@odata.count"], 1);
  redfish_.reset();
}

}  // namespace
}  // namespace zymdb::service
