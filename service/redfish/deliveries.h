// Events that are posted to where somebody wants them.
#ifndef ZYMDB_SERVICE_REDFISH_DELIVERIES_H
#define ZYMDB_SERVICE_REDFISH_DELIVERIES_H

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "service/http/message.h"
#include "service/redfish/model/json.h"
#include "service/redfish/transfers.h"

namespace zymdb::service::redfish {

// What becomes of a subscription whose destination takes nothing.
enum class AfterRetries : uint8_t { kSuspend, kTerminate };

// Where events are wanted, and how.
struct Destination {
  std::string url;
  std::optional<std::string> context = {};  // told with each event
  AfterRetries after_retries = AfterRetries::kSuspend;
  Fields headers = {};
};

// Nothing: as it was.
struct DestinationChange {
  std::optional<std::optional<std::string>> context = {};
  std::optional<AfterRetries> after_retries = {};
};

// An object of the type Event, but for its context.
struct EventMessage {
  std::string id;
  std::shared_ptr<const Json> event;
};

// What becomes of one destination's events.
struct Delivery {
  std::string id;
  std::string user;
  Destination to;  // without its headers, which nobody is told
  bool is_suspended = false;
  uint64_t dropped = 0;  // messages
};

// For any thread. Has one of its own as long as there is somebody to deliver to.
class Deliveries {
 public:
  static constexpr size_t kMost = 8;

  // `look` asks for news, which come by `tell`; `overflow` makes the message that stands for dropped ones.
  using Look = std::function<void()>;
  using Overflow = std::function<EventMessage(const std::string& id)>;

  Deliveries(Look look, Overflow overflow, const DeliveryTimes& times);
  // What is on its way is given up.
  ~Deliveries();
  Deliveries(const Deliveries&) = delete;
  Deliveries& operator=(const Deliveries&) = delete;

  // False where there are enough. Throws std::bad_alloc and std::system_error.
  bool add(const std::string& id, const std::string& user, Destination to);
  bool change(const std::string& id, const DestinationChange& change);
  // False where there is none.
  bool end(const std::string& id);
  void tell(const EventMessage& message);

  std::vector<Delivery> all() const;
  // Whether somebody is delivered to.
  bool is_busy() const;

 private:
  using Clock = std::chrono::steady_clock;

  struct Receiver {
    std::string id;
    std::string user;
    Destination to;
    std::deque<EventMessage> waiting = {};
    std::optional<EventMessage> current = {};  // what is tried
    unsigned tries = 0;                        // of it that failed
    Clock::time_point next_try = {};
    bool is_suspended = false;
    uint64_t dropped = 0;
    std::string untold = {};  // the last that was dropped, where its receiver does not know; empty: none
  };

  void work();
  bool has_reason_to_work();
  void work_once();
  // All with the lock.
  Receiver* find(const std::string& id);
  std::vector<Post> due();
  bool take_next(Receiver& receiver) const;
  void settle(const Outcome& outcome);
  bool is_anyone_active() const;
  std::chrono::milliseconds pause() const;

  const Look look_;
  const Overflow overflow_;
  const DeliveryTimes times_;
  mutable std::mutex mutex_;
  std::vector<Receiver> receivers_;
  std::vector<std::string> ended_;  // whose transfers are given up
  // Made with the first destination.
  std::unique_ptr<Transfers> transfers_;
  std::thread thread_;
  bool is_working_ = false;
  bool is_over_ = false;
};

}  // namespace zymdb::service::redfish

#endif
