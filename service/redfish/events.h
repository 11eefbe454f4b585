// What becomes of the inventory, told to those who listen: by a stream for each of them, or posted to where
// they want it.
#ifndef ZYMDB_SERVICE_REDFISH_EVENTS_H
#define ZYMDB_SERVICE_REDFISH_EVENTS_H

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "service/http/message.h"
#include "service/redfish/deliveries.h"
#include "service/redfish/model/tree.h"

namespace zymdb::service::redfish {

// A message of the registry "ResourceEvent", and the resource that it is of.
struct ResourceEvent {
  std::string_view key;  // "ResourceChanged"
  std::string_view text;
  std::string origin = {};  // a path; empty: none
};

// What became of the resources between two trees, each told once.
std::vector<ResourceEvent> events_between(const Tree& before, const Tree& after);

// Somebody who listens.
struct Subscription {
  std::string id;
  std::string user;
  std::string session;                    // empty: none
  std::optional<Delivery> delivery = {};  // nothing of a stream
};

// For any thread.
class Events {
 public:
  using TreePtr = std::shared_ptr<const Tree>;
  // The tree of this moment; throws DatabaseError.
  using GetTree = std::function<TreePtr()>;
  // Whether a login session is still there.
  using IsAlive = std::function<bool(const std::string& session)>;

  static constexpr size_t kMostStreams = 10;

  Events(GetTree get_tree, IsAlive is_alive, const DeliveryTimes& times = {});
  ~Events();
  Events(const Events&) = delete;
  Events& operator=(const Events&) = delete;

  // Null where there are enough. What is told begins now. The subscription ends with the stream.
  std::shared_ptr<Stream> subscribe(const Caller& caller);

  // Its id; empty where there are enough. It ends with the service.
  std::string subscribe(const Caller& caller, Destination to);
  // Of one that is posted to.
  bool change(const std::string& id, const DestinationChange& change);

  std::vector<Subscription> subscriptions() const;
  // The stream is over then, and nothing more is posted. False where there is none.
  bool end(const std::string& id);

  // To all who listen.
  void send_test_event();

 private:
  class Listener;
  struct State;

  std::shared_ptr<State> state_;
  // Looks by itself as long as somebody is posted to.
  std::unique_ptr<Deliveries> deliveries_;
};

}  // namespace zymdb::service::redfish

#endif
