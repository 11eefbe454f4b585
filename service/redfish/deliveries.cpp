#include "service/redfish/deliveries.h"

#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace zymdb::service::redfish {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(200);
constexpr size_t kMostWaiting = 64;  // messages for one receiver

// Signals are for the thread that waits for them; libcurl's sockets may raise one.
void block_signals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

std::string body_of(const EventMessage& message, const Destination& to) {
  if (!to.context) return text_of(*message.event);
  Json event = *message.event;
  event["Context"] = *to.context;
  return text_of(event);
}

}  // namespace

Deliveries::Deliveries(Look look, Overflow overflow, const DeliveryTimes& times)
    : look_(std::move(look)), overflow_(std::move(overflow)), times_(times) {}

Deliveries::~Deliveries() {
  {
    const std::lock_guard lock(mutex_);
    is_over_ = true;
    if (transfers_ != nullptr) transfers_->wake();
  }
  if (thread_.joinable()) thread_.join();
}

bool Deliveries::add(const std::string& id, const std::string& user, Destination to) {
  const std::lock_guard lock(mutex_);
  if (is_over_ || receivers_.size() >= kMost) return false;
  if (transfers_ == nullptr) transfers_ = std::make_unique<Transfers>(times_);
  receivers_.push_back({.id = id, .user = user, .to = std::move(to)});
  if (is_working_) return true;
  // The one before has nothing more to do with the lock.
  if (thread_.joinable()) thread_.join();
  try {
    thread_ = std::thread([this] { work(); });
  } catch (...) {
    receivers_.pop_back();
    throw;
  }
  is_working_ = true;
  return true;
}

bool Deliveries::change(const std::string& id, const DestinationChange& change) {
  const std::lock_guard lock(mutex_);
  Receiver* const receiver = find(id);
  if (receiver == nullptr) return false;
  if (change.context) receiver->to.context = *change.context;
  if (change.after_retries) receiver->to.after_retries = *change.after_retries;
  return true;
}

bool Deliveries::end(const std::string& id) {
  const std::lock_guard lock(mutex_);
  const bool is_known = std::erase_if(receivers_, [&](const Receiver& each) { return each.id == id; }) != 0;
  if (is_known) {
    ended_.push_back(id);
    transfers_->wake();
  }
  return is_known;
}

void Deliveries::tell(const EventMessage& message) {
  const std::lock_guard lock(mutex_);
  for (Receiver& receiver : receivers_) {
    if (receiver.is_suspended) continue;
    if (receiver.waiting.size() == kMostWaiting) {
      receiver.untold = receiver.waiting.front().id;
      receiver.waiting.pop_front();
      ++receiver.dropped;
    }
    receiver.waiting.push_back(message);
  }
  if (is_working_) transfers_->wake();
}

std::vector<Delivery> Deliveries::all() const {
  const std::lock_guard lock(mutex_);
  std::vector<Delivery> all;
  for (const Receiver& each : receivers_) {
    all.push_back({each.id, each.user, each.to, each.is_suspended, each.dropped});
    all.back().to.headers.clear();
  }
  return all;
}

bool Deliveries::is_busy() const {
  const std::lock_guard lock(mutex_);
  return is_anyone_active();
}

void Deliveries::work() {
  block_signals();
  pthread_setname_np(pthread_self(), "zymdb-events");
  while (true) {
    try {
      if (!has_reason_to_work()) return;
      work_once();
    } catch (const std::exception&) {
      // What there is no memory for now is tried again.
      transfers_->wait(kBetweenLooks);
    }
  }
}

// Without anyone it looks once more, so that whoever is asked for news lets go of what it compares with.
bool Deliveries::has_reason_to_work() {
  for (int looks = 0; looks < 2; ++looks) {
    {
      const std::lock_guard lock(mutex_);
      for (const std::string& id : std::exchange(ended_, {})) transfers_->give_up(id);
      if (is_over_) return false;
      if (is_anyone_active()) return true;
      if (looks > 0) is_working_ = false;
    }
    if (looks == 0) look_();
  }
  return false;
}

void Deliveries::work_once() {
  look_();
  std::vector<Post> posts;
  {
    const std::lock_guard lock(mutex_);
    posts = due();
  }
  for (Post& post : posts) transfers_->start(std::move(post));
  const std::vector<Outcome> outcomes = transfers_->go_on();
  std::chrono::milliseconds longest{0};
  {
    const std::lock_guard lock(mutex_);
    for (const Outcome& outcome : outcomes) settle(outcome);
    // What is delivered may have something waiting behind it.
    if (outcomes.empty()) longest = pause();
  }
  if (longest.count() > 0) transfers_->wait(longest);
}

Deliveries::Receiver* Deliveries::find(const std::string& id) {
  const auto found = std::ranges::find(receivers_, id, &Receiver::id);
  return found != receivers_.end() ? &*found : nullptr;
}

std::vector<Post> Deliveries::due() {
  const auto now = Clock::now();
  std::vector<Post> posts;
  for (Receiver& each : receivers_) {
    if (each.is_suspended || now < each.next_try || transfers_->has(each.id) || !take_next(each)) continue;
    posts.push_back({each.id, each.to.url, each.to.headers, body_of(*each.current, each.to)});
  }
  return posts;
}

// What is dropped is told of in its place.
bool Deliveries::take_next(Receiver& receiver) const {
  if (receiver.current) return true;
  if (!receiver.untold.empty()) {
    receiver.current = overflow_(receiver.untold);
    receiver.untold.clear();
  } else if (!receiver.waiting.empty()) {
    receiver.current = std::move(receiver.waiting.front());
    receiver.waiting.pop_front();
  }
  return receiver.current.has_value();
}

void Deliveries::settle(const Outcome& outcome) {
  Receiver* const receiver = find(outcome.id);
  if (receiver == nullptr) return;
  if (outcome.is_delivered) {
    receiver->current.reset();
    receiver->tries = 0;
  } else if (++receiver->tries < kDeliveryTries) {
    receiver->next_try = Clock::now() + times_.pause;
  } else if (receiver->to.after_retries == AfterRetries::kTerminate) {
    std::erase_if(receivers_, [&](const Receiver& each) { return each.id == outcome.id; });
  } else {
    receiver->is_suspended = true;
    receiver->dropped += receiver->waiting.size() + 1;
    receiver->waiting.clear();
    receiver->current.reset();
  }
}

bool Deliveries::is_anyone_active() const {
  return !std::ranges::all_of(receivers_, &Receiver::is_suspended);
}

std::chrono::milliseconds Deliveries::pause() const {
  const auto now = Clock::now();
  std::chrono::milliseconds longest = kBetweenLooks;
  for (const Receiver& each : receivers_) {
    if (!each.current || each.next_try <= now) continue;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(each.next_try - now);
    longest = std::min(longest, left);
  }
  return longest;
}

}  // namespace zymdb::service::redfish
