// Who may do what: accounts of the system, and the sessions of those who logged in.
#ifndef ZYMDB_SERVICE_ACCOUNTS_ACCOUNTS_H
#define ZYMDB_SERVICE_ACCOUNTS_ACCOUNTS_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "service/http/message.h"

namespace zymdb::service {

struct LoginSession {
  std::string id;
  std::string user;
  Role role = Role::kNone;
  int64_t created = 0;  // seconds since 1970
};

// A login that came through. The token is told once.
struct Login {
  LoginSession session;
  std::string token;
};

// What came of a login.
enum class LoginOutcome : uint8_t {
  kGranted,
  kRefused,  // the password is wrong, or there is no such account
  kDenied,   // the account may do nothing here
  kTooMany,  // sessions
  kLater,    // too many logins failed lately
};

class Accounts {
 public:
  virtual ~Accounts() = default;

  // Slow where it fails. Fills `login` where the login was granted.
  virtual LoginOutcome log_in(const std::string& user, const std::string& password, const std::string& peer,
                              Login& login) = 0;

  // The sessions that have not been idle for too long.
  virtual std::vector<LoginSession> sessions() const = 0;
  virtual std::optional<LoginSession> session(const std::string& id) const = 0;
  // False where there is none.
  virtual bool end_session(const std::string& id) = 0;

  virtual std::chrono::seconds idle_limit() const = 0;
  virtual size_t most_sessions() const = 0;
};

}  // namespace zymdb::service

#endif
