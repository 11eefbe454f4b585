#include "service/accounts/login_throttle.h"

#include <arpa/inet.h>

#include <algorithm>

namespace zymdb::service {
namespace {

using namespace std::chrono_literals;

constexpr unsigned kFreeForUser = 3, kFreeForAddress = 20;
constexpr auto kForgotten = 15min;
constexpr unsigned kLongestDoubling = 6;  // 64 s
constexpr size_t kMostEntries = 1024;

std::string address_key(const std::string& peer) {
  in6_addr address{};
  if (inet_pton(AF_INET6, peer.c_str(), &address) != 1) return peer;
  std::fill(address.s6_addr + 8, address.s6_addr + 16, uint8_t{0});
  char text[INET6_ADDRSTRLEN];
  return inet_ntop(AF_INET6, &address, text, sizeof text);
}

// No address has a NUL in it.
std::string user_key(const std::string& peer, const std::string& user) {
  return address_key(peer) + '\0' + user;
}

}  // namespace

bool LoginThrottle::may_try(const std::string& peer, const std::string& user, Clock::time_point now) const {
  const std::lock_guard lock(mutex_);
  for (const std::string& key : {address_key(peer), user_key(peer, user)}) {
    if (const auto found = failures_.find(key); found != failures_.end() && now < found->second.until)
      return false;
  }
  return true;
}

void LoginThrottle::note_failure(const std::string& peer, const std::string& user, Clock::time_point now) {
  const std::lock_guard lock(mutex_);
  note(address_key(peer), kFreeForAddress, now);
  note(user_key(peer, user), kFreeForUser, now);
}

void LoginThrottle::note_success(const std::string& peer, const std::string& user) {
  const std::lock_guard lock(mutex_);
  failures_.erase(user_key(peer, user));
}

void LoginThrottle::note(const std::string& key, unsigned free, Clock::time_point now) {
  std::erase_if(failures_, [&](const auto& each) { return now - each.second.last > kForgotten; });
  if (failures_.size() >= kMostEntries && !failures_.contains(key)) {
    failures_.erase(
        std::ranges::min_element(failures_, {}, [](const auto& each) { return each.second.last; }));
  }
  Failures& failures = failures_[key];
  failures.last = now;
  if (++failures.count < free) return;
  failures.until = now + std::chrono::seconds(1 << std::min(failures.count - free, kLongestDoubling));
}

}  // namespace zymdb::service
