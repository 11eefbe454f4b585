#include "service/http/connections.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace zymdb::service {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kTooSlow =
    "HTTP/1.1 408 Request Timeout\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: 20\r\n"
    "Connection: close\r\n\r\n408 Request Timeout\n";

}  // namespace

bool Connection::enter(Phase phase, std::chrono::milliseconds longest) {
  Phase before = phase_.load();
  deadline_ = (Clock::now() + longest).time_since_epoch().count();
  while (before != Phase::kOver && !phase_.compare_exchange_weak(before, phase)) {
  }
  return before != Phase::kOver;
}

Connections::Connections(const Limits& limits, std::function<void()> look)
    : limits_(limits), look_(std::move(look)), thread_([this] { watch(); }) {}

Connections::~Connections() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void Connections::add(Connection& connection) {
  connection.enter(Phase::kFresh, limits_.receiving);
  const std::lock_guard lock(mutex_);
  open_.insert(&connection);
  const unsigned of_peer = ++by_peer_[connection.peer_];
  connection.is_one_too_many_ =
      open_.size() > limits_.connections || of_peer > limits_.connections_of_an_address;
  changed_.notify_all();
}

void Connections::remove(Connection& connection) {
  const std::lock_guard lock(mutex_);
  open_.erase(&connection);
  const auto peer = by_peer_.find(connection.peer_);
  if (--peer->second == 0) by_peer_.erase(peer);
}

unsigned Connections::count() const {
  const std::lock_guard lock(mutex_);
  return static_cast<unsigned>(open_.size());
}

bool Connections::are_alive() const {
  const auto now = Clock::now().time_since_epoch().count();
  const std::lock_guard lock(mutex_);
  return std::ranges::none_of(open_, [&](const Connection* each) {
    return each->phase_ == Phase::kAnswering && each->deadline_ < now;
  });
}

void Connections::wait_for_answers(std::chrono::milliseconds longest) {
  const auto deadline = Clock::now() + longest;
  const auto is_answered = [](const Connection* each) {
    return each->phase_ == Phase::kAnswering || each->phase_ == Phase::kSending;
  };
  std::unique_lock lock(mutex_);
  while (std::ranges::any_of(open_, is_answered) && Clock::now() < deadline)
    changed_.wait_for(lock, std::chrono::milliseconds(10));
}

void Connections::close_all(std::chrono::milliseconds longest) {
  const auto deadline = Clock::now() + longest;
  std::unique_lock lock(mutex_);
  while (!open_.empty() && Clock::now() < deadline) {
    for (Connection* const each : open_) {
      each->phase_ = Phase::kOver;
      shutdown(each->descriptor_, SHUT_RDWR);
    }
    changed_.wait_for(lock, std::chrono::milliseconds(10));
  }
}

void Connections::watch() {
  const auto shortest = std::min({limits_.receiving, limits_.sending, limits_.idle});
  const auto pause = std::clamp<std::chrono::milliseconds>(shortest / 4, std::chrono::milliseconds(10),
                                                           std::chrono::milliseconds(250));
  std::unique_lock lock(mutex_);
  while (!ends_) {
    if (open_.empty()) {
      changed_.wait(lock, [this] { return ends_ || !open_.empty(); });
      continue;
    }
    changed_.wait_for(lock, pause, [this] { return ends_; });
    close_overdue();
    close_left();
    lock.unlock();
    look_();
    lock.lock();
  }
}

void Connections::close_overdue() {
  const auto now = Clock::now().time_since_epoch().count();
  for (Connection* const each : open_) {
    Phase phase = each->phase_;
    if (phase == Phase::kAnswering || phase == Phase::kOver || each->deadline_ >= now) continue;
    if (!each->phase_.compare_exchange_strong(phase, Phase::kOver)) continue;
    // Within TLS nobody but its library can say anything.
    if ((phase == Phase::kReceiving || phase == Phase::kFresh) && !each->is_encrypted_)
      send(each->descriptor_, kTooSlow.data(), kTooSlow.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(each->descriptor_, SHUT_RDWR);
  }
}

// The library asks the system to be told of changes alone, and overlooks an end that comes together with the
// last bytes. A request that was sent whole before it has had the time between two looks to be understood.
void Connections::close_left() {
  std::vector<pollfd> ready;
  for (const Connection* const each : open_) ready.push_back({each->descriptor_, POLLRDHUP, 0});
  if (poll(ready.data(), ready.size(), 0) <= 0) return;
  auto found = ready.begin();
  for (Connection* const each : open_) {
    const bool has_left = (found++)->revents != 0;
    Phase phase = each->phase_;
    if (!has_left || phase == Phase::kAnswering || phase == Phase::kSending || phase == Phase::kOver)
      continue;
    if (std::exchange(each->left_at_, each->deadline_.load()) != each->deadline_) continue;
    if (each->phase_.compare_exchange_strong(phase, Phase::kOver)) shutdown(each->descriptor_, SHUT_RDWR);
  }
}

}  // namespace zymdb::service
