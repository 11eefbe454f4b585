#include "service/accounts/system_users.h"

#include <grp.h>
#include <pwd.h>
#include <security/pam_appl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

namespace zymdb::service {
namespace {

// As PAM takes it, though its constants have no sign.
constexpr int kFlags = static_cast<int>(PAM_SILENT | PAM_DISALLOW_NULL_AUTHTOK);

constexpr std::pair<const char*, Role> kGroups[] = {
    {"zymdb-administrator", Role::kAdministrator},
    {"zymdb-operator", Role::kOperator},
    {"zymdb-readonly", Role::kReadOnly},
};

void free_answers(pam_response* answers, int count) {
  for (int i = 0; i < count; ++i) std::free(answers[i].resp);
  std::free(answers);
}

// Answers the one question for a password. Whoever asks for more has rules that nobody at a terminal can meet
// here.
int converse(int count, const pam_message** messages, pam_response** answers, void* password) {
  if (count <= 0 || count > PAM_MAX_NUM_MSG) return PAM_CONV_ERR;
  auto* const given =
      static_cast<pam_response*>(std::calloc(static_cast<size_t>(count), sizeof(pam_response)));
  if (given == nullptr) return PAM_BUF_ERR;
  for (int i = 0; i < count; ++i) {
    const int style = messages[i]->msg_style;
    if (style == PAM_TEXT_INFO || style == PAM_ERROR_MSG) continue;
    if (style == PAM_PROMPT_ECHO_OFF)
      given[i].resp = strdup(static_cast<const std::string*>(password)->c_str());
    if (given[i].resp != nullptr) continue;
    free_answers(given, count);
    return PAM_CONV_ERR;
  }
  *answers = given;
  return PAM_SUCCESS;
}

// Failures are slowed down by whoever asked, without a thread that sleeps.
void do_not_wait(int, unsigned, void*) {}

class PamConversation {
 public:
  PamConversation(const std::string& user, const std::string& password)
      : conversation_{converse, const_cast<std::string*>(&password)},
        result_(pam_start(kPamService, user.c_str(), &conversation_, &handle_)) {}
  ~PamConversation() {
    if (handle_ != nullptr) pam_end(handle_, result_);
  }
  PamConversation(const PamConversation&) = delete;
  PamConversation& operator=(const PamConversation&) = delete;

  template <class Step, class... Arguments>
  void then(Step step, Arguments... arguments) {
    if (result_ == PAM_SUCCESS) result_ = step(handle_, arguments...);
  }

  bool has_succeeded() const { return result_ == PAM_SUCCESS; }

 private:
  const pam_conv conversation_;
  pam_handle_t* handle_ = nullptr;
  int result_;
};

// Of the system's functions that want room for texts: asks again while there is not enough.
template <class Entry, class Look>
std::optional<Entry> look_up(std::vector<char>& room, Look look) {
  constexpr size_t kMost = 1 << 20;
  for (room.resize(1024); room.size() <= kMost; room.resize(room.size() * 2)) {
    Entry entry{};
    Entry* found = nullptr;
    if (look(&entry, room, &found) == ERANGE) continue;
    return found != nullptr ? std::optional(entry) : std::nullopt;
  }
  return {};
}

std::vector<gid_t> groups_of(const std::string& user) {
  std::vector<char> room;
  const auto account = look_up<passwd>(room, [&](passwd* entry, std::vector<char>& texts, passwd** found) {
    return getpwnam_r(user.c_str(), entry, texts.data(), texts.size(), found);
  });
  if (!account) return {};
  constexpr int kMost = 65536;  // the system's own bound
  std::vector<gid_t> groups(32);
  for (int count = static_cast<int>(groups.size()); count <= kMost;
       groups.resize(static_cast<size_t>(count))) {
    if (getgrouplist(user.c_str(), account->pw_gid, groups.data(), &count) >= 0) {
      groups.resize(static_cast<size_t>(count));
      return groups;
    }
  }
  return {};
}

std::optional<gid_t> group_named(const char* name) {
  std::vector<char> room;
  const auto found = look_up<group>(room, [&](group* entry, std::vector<char>& texts, group** result) {
    return getgrnam_r(name, entry, texts.data(), texts.size(), result);
  });
  return found ? std::optional(found->gr_gid) : std::nullopt;
}

}  // namespace

bool is_password(const std::string& user, const std::string& password, const std::string& peer) {
  PamConversation pam(user, password);
  pam.then(pam_set_item, PAM_FAIL_DELAY, reinterpret_cast<const void*>(&do_not_wait));
  pam.then(pam_set_item, PAM_RHOST, static_cast<const void*>(peer.c_str()));
  pam.then(pam_authenticate, kFlags);
  pam.then(pam_acct_mgmt, kFlags);
  return pam.has_succeeded();
}

Role role_of(const std::string& user) {
  const auto groups = groups_of(user);
  for (const auto& [name, role] : kGroups) {
    const auto group = group_named(name);
    if (group && std::ranges::find(groups, *group) != groups.end()) return role;
  }
  return Role::kNone;
}

}  // namespace zymdb::service
