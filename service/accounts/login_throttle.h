// Who guesses passwords has to wait, longer and longer, and nobody else.
#ifndef ZYMDB_SERVICE_ACCOUNTS_LOGIN_THROTTLE_H
#define ZYMDB_SERVICE_ACCOUNTS_LOGIN_THROTTLE_H

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace zymdb::service {

// Counts failures by address and user, and by address alone, where more are free: behind one address there
// may be many people. Not by user alone, or anybody could lock others out. For any thread.
class LoginThrottle {
 public:
  using Clock = std::chrono::steady_clock;

  // Another address of the same network is the same one: of IPv6 the first half counts.
  bool may_try(const std::string& peer, const std::string& user, Clock::time_point now = Clock::now()) const;
  void note_failure(const std::string& peer, const std::string& user, Clock::time_point now = Clock::now());
  // Failures of the address alone stay: one account of one's own must not make guesses at another one free.
  void note_success(const std::string& peer, const std::string& user);

 private:
  struct Failures {
    unsigned count = 0;
    Clock::time_point last;
    Clock::time_point until;
  };

  void note(const std::string& key, unsigned free, Clock::time_point now);

  mutable std::mutex mutex_;
  std::map<std::string, Failures> failures_;
};

}  // namespace zymdb::service

#endif
