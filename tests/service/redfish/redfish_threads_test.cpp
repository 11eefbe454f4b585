// Many who ask while the inventory changes: every answer is of one moment.
#include <atomic>

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

}  // namespace
}  // namespace zymdb::service
