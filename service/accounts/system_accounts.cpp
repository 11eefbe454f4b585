#include "service/accounts/system_accounts.h"

#include <gnutls/crypto.h>
#include <sys/random.h>
#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include "service/accounts/system_users.h"

namespace zymdb::service {
namespace {

// PAM takes no longer ones.
constexpr size_t kLongestUser = 256, kLongestPassword = 511;
constexpr size_t kMostBelieved = 256;

std::array<uint8_t, 32> random_bytes() {
  std::array<uint8_t, 32> bytes{};
  for (size_t have = 0; have < bytes.size();) {
    const ssize_t count = getrandom(bytes.data() + have, bytes.size() - have, 0);
    if (count < 0 && errno != EINTR) throw std::runtime_error("the system has no random numbers");
    if (count > 0) have += static_cast<size_t>(count);
  }
  return bytes;
}

std::array<uint8_t, 32> sha256(std::string_view text) {
  std::array<uint8_t, 32> digest{};
  if (gnutls_hash_fast(GNUTLS_DIG_SHA256, text.data(), text.size(), digest.data()) < 0)
    throw std::runtime_error("cannot compute a digest");
  return digest;
}

std::string hex(const std::array<uint8_t, 32>& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

int64_t now_in_seconds() {
  using namespace std::chrono;
  return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

// PAM's texts end with the first NUL.
bool is_text(const std::string& text, size_t longest) {
  return text.size() <= longest && text.find('\0') == std::string::npos;
}

Identity::Kind kind_of(LoginOutcome outcome) {
  switch (outcome) {
    case LoginOutcome::kGranted:
      return Identity::Kind::kKnown;
    case LoginOutcome::kDenied:
      return Identity::Kind::kDenied;
    case LoginOutcome::kLater:
    case LoginOutcome::kTooMany:
      return Identity::Kind::kLater;
    case LoginOutcome::kRefused:
      break;
  }
  return Identity::Kind::kWrong;
}

std::optional<Credentials> basic_of(const Request& request) {
  const auto authorization = request.header("Authorization");
  return authorization ? parse_basic(*authorization) : std::nullopt;
}

}  // namespace

SystemAccounts::SystemAccounts(const AccountLimits& limits, Log log)
    : limits_(limits), log_(std::move(log)), key_(random_bytes()) {}

LoginOutcome SystemAccounts::check(const std::string& user, const std::string& password,
                                   const std::string& peer, Role& role) {
  if (!throttle_.may_try(peer, user)) return LoginOutcome::kLater;
  const bool is_possible =
      is_text(user, kLongestUser) && !user.empty() && is_text(password, kLongestPassword);
  if (!is_possible || !is_password(user, password, peer)) {
    ++failed_logins_;
    throttle_.note_failure(peer, user);
    log_(LOG_NOTICE, "login of '" + user.substr(0, kLongestUser) + "' from " + peer + " failed");
    return LoginOutcome::kRefused;
  }
  throttle_.note_success(peer, user);
  role = role_of(user);
  if (role != Role::kNone) return LoginOutcome::kGranted;
  log_(LOG_NOTICE, "login of '" + user + "' from " + peer + " denied: the account is in none of the groups");
  return LoginOutcome::kDenied;
}

LoginOutcome SystemAccounts::log_in(const std::string& user, const std::string& password,
                                    const std::string& peer, Login& login) {
  Role role = Role::kNone;
  const LoginOutcome outcome = check(user, password, peer, role);
  if (outcome != LoginOutcome::kGranted) return outcome;
  const std::string token = hex(random_bytes());
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  std::erase_if(sessions_, [&](const Session& session) { return is_over(session, now); });
  if (sessions_.size() >= limits_.sessions) return LoginOutcome::kTooMany;
  const LoginSession session{std::to_string(++last_id_), user, role, now_in_seconds()};
  sessions_.push_back({session, sha256(token), now, now});
  login = {session, token};
  log_(LOG_INFO, "login of '" + user + "' from " + peer);
  return LoginOutcome::kGranted;
}

std::vector<LoginSession> SystemAccounts::sessions() const {
  const auto now = Clock::now();
  std::vector<LoginSession> told;
  const std::lock_guard lock(mutex_);
  for (const Session& session : sessions_) {
    if (!is_over(session, now)) told.push_back(session.told);
  }
  return told;
}

std::optional<LoginSession> SystemAccounts::session(const std::string& id) const {
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find(sessions_, id, [](const Session& each) { return each.told.id; });
  return found != sessions_.end() && !is_over(*found, now) ? std::optional(found->told) : std::nullopt;
}

bool SystemAccounts::end_session(const std::string& id) {
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find(sessions_, id, [](const Session& each) { return each.told.id; });
  if (found == sessions_.end()) return false;
  const bool was_over = is_over(*found, now);
  sessions_.erase(found);
  return !was_over;
}

std::chrono::seconds SystemAccounts::idle_limit() const {
  return std::chrono::duration_cast<std::chrono::seconds>(limits_.idle);
}

Identity SystemAccounts::identify(const Request& request) {
  if (const auto token = request.header("X-Auth-Token")) return identify_session(*token);
  if (const auto credentials = basic_of(request)) return identify_basic(*credentials, request.peer);
  return {request.header("Authorization") ? Identity::Kind::kWrong : Identity::Kind::kNobody, {}};
}

bool SystemAccounts::has_to_ask(const Request& request) const {
  if (request.header("X-Auth-Token")) return false;
  const auto credentials = basic_of(request);
  return credentials && !believed(digest_of(*credentials));
}

// All of them are compared, and each digest to its end: how long it takes tells nothing.
Identity SystemAccounts::identify_session(std::string_view token) {
  const Digest digest = sha256(token);
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  std::erase_if(sessions_, [&](const Session& session) { return is_over(session, now); });
  Session* found = nullptr;
  for (Session& session : sessions_) {
    if (gnutls_memcmp(session.token.data(), digest.data(), digest.size()) == 0) found = &session;
  }
  if (found == nullptr) return {Identity::Kind::kWrong, {}};
  found->used = now;
  return {Identity::Kind::kKnown, {found->told.user, found->told.role, found->told.id}};
}

Identity SystemAccounts::identify_basic(const Credentials& credentials, const std::string& peer) {
  const Digest digest = digest_of(credentials);
  if (const auto account = believed(digest))
    return {Identity::Kind::kKnown, {account->user, account->role, ""}};
  Role role = Role::kNone;
  const LoginOutcome outcome = check(credentials.user, credentials.password, peer, role);
  if (outcome != LoginOutcome::kGranted) return {kind_of(outcome), {}};
  believe(digest, {credentials.user, role, Clock::now() + limits_.believed});
  return {Identity::Kind::kKnown, {credentials.user, role, ""}};
}

std::optional<SystemAccounts::Believed> SystemAccounts::believed(const Digest& digest) const {
  const std::lock_guard lock(mutex_);
  const auto found = believed_.find(digest);
  return found != believed_.end() && Clock::now() < found->second.until ? std::optional(found->second)
                                                                        : std::nullopt;
}

void SystemAccounts::believe(const Digest& digest, const Believed& account) {
  const auto now = Clock::now();
  const std::lock_guard lock(mutex_);
  std::erase_if(believed_, [&](const auto& each) { return each.second.until <= now; });
  if (believed_.size() >= kMostBelieved) believed_.erase(believed_.begin());
  believed_[digest] = account;
}

// Neither has a NUL in it.
SystemAccounts::Digest SystemAccounts::digest_of(const Credentials& credentials) const {
  const std::string text = credentials.user + '\0' + credentials.password;
  Digest digest{};
  if (gnutls_hmac_fast(GNUTLS_MAC_SHA256, key_.data(), key_.size(), text.data(), text.size(), digest.data()) <
      0)
    throw std::runtime_error("cannot compute a digest");
  return digest;
}

bool SystemAccounts::is_over(const Session& session, Clock::time_point now) const {
  return now - session.used > limits_.idle || now - session.begun > limits_.session;
}

}  // namespace zymdb::service
