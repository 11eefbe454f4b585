#include "service/redfish/events.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <deque>
#include <set>
#include <utility>

#include "common/client_objects.h"
#include "common/text.h"
#include "documents/difference.h"
#include "service/redfish/model/messages.h"

namespace zymdb::service::redfish {
namespace {

using Clock = std::chrono::steady_clock;
using TreePtr = Events::TreePtr;

constexpr auto kMoment = std::chrono::milliseconds(200);
// A connection that is gone is noticed by what is written to it.
constexpr auto kSilence = std::chrono::seconds(15);
constexpr size_t kMostWaiting = 64;        // messages that nobody took yet
constexpr size_t kMostEventsAtOnce = 100;  // in one message

// Of all events that are told by their registry.
constexpr char kEventType[] = "Other";

const ResourceEvent kCreated{"ResourceCreated", "The resource was created successfully."};
const ResourceEvent kRemoved{"ResourceRemoved", "The resource was removed successfully."};
const ResourceEvent kChanged{"ResourceChanged", "One or more resource properties have changed."};
const ResourceEvent kTest{"TestMessage", "Test message."};

Json record_of(const ResourceEvent& event, const std::string& id, size_t member, const std::string& time) {
  Json record{{"MemberId", std::to_string(member)},
              {"EventType", kEventType},
              {"EventId", id + "-" + std::to_string(member)},
              {"EventTimestamp", time},
              {"MessageId", "ResourceEvent.1.4." + std::string(event.key)},
              {"Message", std::string(event.text)},
              {"MessageArgs", Json::array()},
              {"MessageSeverity", "OK"}};
  if (!event.origin.empty()) record["OriginOfCondition"] = link(event.origin);
  return record;
}

Json event_of(const std::string& id, Json records) {
  return {{"@odata.type", type_of(*schema("Event"))},
          {"Id", id},
          {"Name", "Inventory events"},
          {"Events@odata.count", records.size()},
          {"Events", std::move(records)}};
}

EventMessage message_of(const std::string& id, Json records) {
  return {id, std::make_shared<const Json>(event_of(id, std::move(records)))};
}

std::string streamed(const EventMessage& message) {
  return "id: " + message.id + "\ndata: " + text_of(*message.event) + "\n\n";
}

// What was dropped, somebody may have waited for.
EventMessage overflow_message(const std::string& id) {
  Json record = json_of(Message{"EventBufferExceeded"});
  record.erase("@odata.type");
  record["MemberId"] = "0";
  record["EventType"] = kEventType;
  record["EventTimestamp"] = iso_text(std::time(nullptr));
  return message_of(id, Json::array({std::move(record)}));
}

const ResourceEvent& kind_of(documents::ChangeKind kind) {
  switch (kind) {
    case documents::ChangeKind::kAdded:
      return kCreated;
    case documents::ChangeKind::kRemoved:
      return kRemoved;
    default:
      return kChanged;
  }
}

}  // namespace

std::vector<ResourceEvent> events_between(const Tree& before, const Tree& after) {
  std::vector<ResourceEvent> events;
  std::set<std::pair<std::string_view, std::string>> told;
  const auto tell = [&](const ResourceEvent& kind, const std::string& path) {
    if (!path.empty() && told.emplace(kind.key, path).second) events.push_back({kind.key, kind.text, path});
  };
  for (const documents::Change& change : documents::difference(before.document(), after.document())) {
    const std::string from = change.before.empty() ? "" : before.path_of(change.part_class, change.before);
    const std::string to = change.after.empty() ? "" : after.path_of(change.part_class, change.after);
    const bool has_moved = !from.empty() && !to.empty() && from != to;
    if (has_moved) {
      tell(kRemoved, from);
      tell(kCreated, to);
    } else {
      tell(kind_of(change.kind), to.empty() ? from : to);
    }
  }
  return events;
}

struct Events::State {
  State(GetTree tree, IsAlive alive) : get_tree(std::move(tree)), is_alive(std::move(alive)) {}

  const GetTree get_tree;
  const IsAlive is_alive;
  std::mutex looking;  // held by the one who compares trees; taken before `mutex`
  TreePtr last;        // of the last look, guarded by `looking`
  mutable std::mutex mutex;
  std::condition_variable news;
  bool is_over = false;
  uint64_t subscriptions = 0;  // that there ever were
  uint64_t messages = 0;
  std::vector<Listener*> listeners;
  Deliveries* deliveries = nullptr;  // null: over

  // With the lock.
  bool has_audience() const { return !listeners.empty() || (deliveries != nullptr && deliveries->is_busy()); }

  void look();
  void send(const std::vector<ResourceEvent>& events);
};

class Events::Listener : public Stream {
 public:
  Listener(std::shared_ptr<State> state, Subscription about)
      : state_(std::move(state)), about_(std::move(about)) {}
  ~Listener() override {
    const std::lock_guard only(state_->looking);
    const std::lock_guard lock(state_->mutex);
    std::erase(state_->listeners, this);
    if (!state_->has_audience()) state_->last = nullptr;
  }

  std::string take() override {
    state_->look();
    std::unique_lock lock(state_->mutex);
    state_->news.wait_for(lock, kMoment,
                          [this] { return !waiting_.empty() || is_ended_ || state_->is_over; });
    std::string text;
    for (; !waiting_.empty(); waiting_.pop_front()) text += waiting_.front();
    const auto now = Clock::now();
    if (now - last_checked_ >= kSilence) {
      last_checked_ = now;
      // Whose session has ended may not listen any more.
      if (!state_->is_over && !about_.session.empty() && !state_->is_alive(about_.session)) is_ended_ = true;
      if (text.empty()) text = ": \n\n";
    }
    return text;
  }

  bool is_over() const override {
    const std::lock_guard lock(state_->mutex);
    return state_->is_over || (is_ended_ && waiting_.empty());
  }

  // Both with the state's lock.
  void add(const std::string& id, const std::string& message) {
    if (waiting_.size() == kMostWaiting) {
      waiting_.clear();
      waiting_.push_back(streamed(overflow_message(id)));
    }
    waiting_.push_back(message);
  }
  void end() { is_ended_ = true; }
  const Subscription& about() const { return about_; }

 private:
  const std::shared_ptr<State> state_;
  const Subscription about_;
  std::deque<std::string> waiting_ = {};
  bool is_ended_ = false;
  Clock::time_point last_checked_ = Clock::now();
};

// One of those who listen looks for all of them.
void Events::State::look() {
  const std::unique_lock only(looking, std::try_to_lock);
  if (!only.owns_lock()) return;
  {
    const std::lock_guard lock(mutex);
    if (!has_audience()) last = nullptr;
    if (is_over || !has_audience()) return;
  }
  try {
    const TreePtr now = get_tree();
    if (now == last) return;
    const TreePtr before = std::exchange(last, now);
    if (before != nullptr) send(events_between(*before, *now));
  } catch (const DatabaseError&) {
    // An inventory that cannot be read now is compared when it can.
  }
}

void Events::State::send(const std::vector<ResourceEvent>& events) {
  const std::string time = iso_text(std::time(nullptr));
  const std::lock_guard lock(mutex);
  for (size_t begin = 0; begin < events.size(); begin += kMostEventsAtOnce) {
    const std::string id = std::to_string(++messages);
    Json records = Json::array();
    for (size_t at = begin; at < std::min(begin + kMostEventsAtOnce, events.size()); ++at)
      records.push_back(record_of(events[at], id, at - begin, time));
    const EventMessage message = message_of(id, std::move(records));
    if (!listeners.empty()) {
      const std::string text = streamed(message);
      for (Listener* const listener : listeners) listener->add(id, text);
    }
    if (deliveries != nullptr) deliveries->tell(message);
  }
  news.notify_all();
}

Events::Events(GetTree get_tree, IsAlive is_alive, const DeliveryTimes& times)
    : state_(std::make_shared<State>(std::move(get_tree), std::move(is_alive))),
      deliveries_(
          std::make_unique<Deliveries>([state = state_.get()] { state->look(); }, overflow_message, times)) {
  state_->deliveries = deliveries_.get();
}

// Streams may be taken from a little longer: they tell that they are over, and of nothing else.
Events::~Events() {
  const std::lock_guard looking(state_->looking);
  const std::lock_guard lock(state_->mutex);
  state_->is_over = true;
  state_->deliveries = nullptr;
  state_->news.notify_all();
}

std::shared_ptr<Stream> Events::subscribe(const Caller& caller) {
  const TreePtr now = state_->get_tree();
  const std::lock_guard only(state_->looking);
  const std::lock_guard lock(state_->mutex);
  if (state_->listeners.size() >= kMostStreams) return nullptr;
  // While nobody listened, nobody looked.
  if (!state_->has_audience()) state_->last = now;
  auto listener = std::make_shared<Listener>(
      state_, Subscription{std::to_string(++state_->subscriptions), caller.user, caller.session});
  state_->listeners.push_back(listener.get());
  return listener;
}

std::string Events::subscribe(const Caller& caller, Destination to) {
  const TreePtr now = state_->get_tree();
  const std::lock_guard only(state_->looking);
  const std::lock_guard lock(state_->mutex);
  const bool had_audience = state_->has_audience();
  const std::string id = std::to_string(state_->subscriptions + 1);
  if (!deliveries_->add(id, caller.user, std::move(to))) return "";
  ++state_->subscriptions;
  if (!had_audience) state_->last = now;
  return id;
}

bool Events::change(const std::string& id, const DestinationChange& change) {
  return deliveries_->change(id, change);
}

std::vector<Subscription> Events::subscriptions() const {
  const std::lock_guard lock(state_->mutex);
  std::vector<Subscription> all;
  for (const Listener* const listener : state_->listeners) all.push_back(listener->about());
  for (Delivery& delivery : deliveries_->all())
    all.push_back({.id = delivery.id, .user = delivery.user, .session = {}, .delivery = std::move(delivery)});
  return all;
}

bool Events::end(const std::string& id) {
  const std::lock_guard lock(state_->mutex);
  for (Listener* const listener : state_->listeners) {
    if (listener->about().id != id) continue;
    listener->end();
    std::erase(state_->listeners, listener);
    state_->news.notify_all();
    return true;
  }
  return deliveries_->end(id);
}

void Events::send_test_event() {
  state_->send({kTest});
}

}  // namespace zymdb::service::redfish
