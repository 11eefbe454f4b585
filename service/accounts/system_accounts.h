// Accounts of the system the service runs on.
#ifndef ZYMDB_SERVICE_ACCOUNTS_SYSTEM_ACCOUNTS_H
#define ZYMDB_SERVICE_ACCOUNTS_SYSTEM_ACCOUNTS_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "service/accounts/accounts.h"
#include "service/accounts/login_throttle.h"
#include "service/http/log.h"
#include "service/http/target.h"

namespace zymdb::service {

struct AccountLimits {
  size_t sessions = 64;
  std::chrono::milliseconds idle = std::chrono::minutes(30);
  // How long a session lasts at most, however busy: then its groups are asked for again.
  std::chrono::milliseconds session = std::chrono::hours(12);
  // How long a password that came with a request is believed without asking again.
  std::chrono::milliseconds believed = std::chrono::seconds(60);
};

// What a request says of who sends it.
struct Identity {
  enum class Kind : uint8_t { kNobody, kKnown, kWrong, kDenied, kLater } kind = Kind::kNobody;
  Caller caller = {};
};

// Passwords are PAM's to judge, roles the groups'. Of a token and of a password that was right only what
// cannot be turned back into it is kept. For any thread.
class SystemAccounts : public Accounts {
 public:
  SystemAccounts(const AccountLimits& limits, Log log);

  LoginOutcome log_in(const std::string& user, const std::string& password, const std::string& peer,
                      Login& login) override;
  std::vector<LoginSession> sessions() const override;
  std::optional<LoginSession> session(const std::string& id) const override;
  bool end_session(const std::string& id) override;
  std::chrono::seconds idle_limit() const override;
  size_t most_sessions() const override { return limits_.sessions; }

  // By X-Auth-Token or else by Authorization: Basic.
  Identity identify(const Request& request);
  // Whether identify() has to ask the system.
  bool has_to_ask(const Request& request) const;

  uint64_t failed_logins() const { return failed_logins_; }

 private:
  using Clock = std::chrono::steady_clock;
  using Digest = std::array<uint8_t, 32>;

  struct Session {
    LoginSession told;
    Digest token;
    Clock::time_point begun;
    Clock::time_point used;
  };
  struct Believed {
    std::string user;
    Role role = Role::kNone;
    Clock::time_point until;
  };

  LoginOutcome check(const std::string& user, const std::string& password, const std::string& peer,
                     Role& role);
  Identity identify_session(std::string_view token);
  Identity identify_basic(const Credentials& credentials, const std::string& peer);
  std::optional<Believed> believed(const Digest& digest) const;
  void believe(const Digest& digest, const Believed& account);
  Digest digest_of(const Credentials& credentials) const;
  bool is_over(const Session& session, Clock::time_point now) const;

  const AccountLimits limits_;
  const Log log_;
  const Digest key_;  // of this process
  LoginThrottle throttle_;
  std::atomic<uint64_t> failed_logins_ = 0;
  mutable std::mutex mutex_;
  std::list<Session> sessions_;
  std::map<Digest, Believed> believed_;
  uint64_t last_id_ = 0;
};

}  // namespace zymdb::service

#endif
