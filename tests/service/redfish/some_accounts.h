// Accounts of a test: a few users whose password is their name backwards.
#ifndef ZYMDB_TESTS_SERVICE_REDFISH_SOME_ACCOUNTS_H
#define ZYMDB_TESTS_SERVICE_REDFISH_SOME_ACCOUNTS_H

#include <algorithm>
#include <map>
#include <mutex>
#include <string>

#include "service/accounts/accounts.h"

namespace zymdb::service {

class SomeAccounts : public Accounts {
 public:
  LoginOutcome log_in(const std::string& user, const std::string& password, const std::string&,
                      Login& login) override {
    const std::map<std::string, Role> roles = {
        {"reader", Role::kReadOnly}, {"keeper", Role::kOperator}, {"owner", Role::kAdministrator}};
    if (user == "nobody") return LoginOutcome::kDenied;
    if (user == "hasty") return LoginOutcome::kLater;
    const auto role = roles.find(user);
    if (role == roles.end() || password != std::string(user.rbegin(), user.rend()))
      return LoginOutcome::kRefused;
    const std::lock_guard lock(mutex_);
    if (sessions_.size() == most_sessions()) return LoginOutcome::kTooMany;
    login.session = {"s" + std::to_string(++count_), user, role->second, 1'700'000'000 + count_};
    login.token = "token of " + login.session.id;
    sessions_.emplace(login.session.id, login.session);
    return LoginOutcome::kGranted;
  }

  std::vector<LoginSession> sessions() const override {
    const std::lock_guard lock(mutex_);
    std::vector<LoginSession> all;
    for (const auto& [id, session] : sessions_) all.push_back(session);
    return all;
  }
  std::optional<LoginSession> session(const std::string& id) const override {
    const std::lock_guard lock(mutex_);
    const auto found = sessions_.find(id);
    return found != sessions_.end() ? std::optional(found->second) : std::nullopt;
  }
  bool end_session(const std::string& id) override {
    const std::lock_guard lock(mutex_);
    return sessions_.erase(id) != 0;
  }

  std::chrono::seconds idle_limit() const override { return std::chrono::minutes(30); }
  size_t most_sessions() const override { return 8; }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, LoginSession> sessions_;
  int count_ = 0;
};

}  // namespace zymdb::service

#endif
