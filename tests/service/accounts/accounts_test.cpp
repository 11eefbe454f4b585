// Logins by PAM, sessions, and what a request says of who sends it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <syslog.h>

#include <mutex>
#include <set>
#include <thread>

#include "service/accounts/system_accounts.h"
#include "service/accounts/system_users.h"

namespace zymdb::service {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::SizeIs;

constexpr char kPeer[] = "10.0.0.1";

// "Basic …" of "ada:right" and others.
constexpr char kAda[] = "Basic YWRhOnJpZ2h0", kAdaWrong[] = "Basic YWRhOndyb25n",
               kNora[] = "Basic bm9yYTpyaWdodA==";

class AccountsTest : public testing::Test {
 protected:
  SystemAccounts accounts(const AccountLimits& limits = {}) {
    return {limits, [this](int, const std::string& line) {
              const std::lock_guard lock(mutex_);
              log_.push_back(line);
            }};
  }

  static Request request(const std::string& header, const std::string& value) {
    Request request;
    request.headers.emplace_back(header, value);
    request.peer = kPeer;
    return request;
  }

  static std::string token_of(SystemAccounts& accounts, const std::string& user = "ada") {
    Login login;
    EXPECT_EQ(accounts.log_in(user, "right", kPeer, login), LoginOutcome::kGranted);
    return login.token;
  }

  std::vector<std::string> log_;
  std::mutex mutex_;
};

TEST(Roles, AreTheMostThatAGroupGives) {
  EXPECT_EQ(role_of("ada"), Role::kAdministrator);
  EXPECT_EQ(role_of("oscar"), Role::kOperator);
  EXPECT_EQ(role_of("rhea"), Role::kReadOnly);
  EXPECT_EQ(role_of("nora"), Role::kNone);
  EXPECT_EQ(role_of("root"), Role::kNone);
  EXPECT_EQ(role_of("nobody-at-all"), Role::kNone);
}

TEST_F(AccountsTest, GrantWhomPamKnowsAndAGroupAllows) {
  auto accounts = this->accounts();
  Login login;
  EXPECT_EQ(accounts.log_in("oscar", "right", kPeer, login), LoginOutcome::kGranted);
  EXPECT_EQ(login.session.user, "oscar");
  EXPECT_EQ(login.session.role, Role::kOperator);
  EXPECT_GT(login.session.created, 1700000000);
  EXPECT_THAT(login.token, testing::MatchesRegex("[0-9a-f]{64}"));
}

TEST_F(AccountsTest, RefuseWhomPamRefusesAndSaySo) {
  auto accounts = this->accounts();
  Login login;
  for (const auto& [user, password] :
       std::vector<std::pair<std::string, std::string>>{{"ada", "wrong"},
                                                        {"ada", ""},
                                                        {"", "right"},
                                                        {"unknown", "right"},
                                                        {std::string("ada\0x", 5), "right"},
                                                        {"oscar", std::string("right\0x", 7)},
                                                        {"rhea", std::string(5000, 'x')},
                                                        {std::string(5000, 'x'), "right"}})
    EXPECT_EQ(accounts.log_in(user, password, kPeer, login), LoginOutcome::kRefused)
        << user << " " << password;
  EXPECT_EQ(accounts.failed_logins(), 8U);
  EXPECT_THAT(log_, Contains("login of 'ada' from 10.0.0.1 failed"));
  EXPECT_THAT(log_, SizeIs(8));
  EXPECT_EQ(login.token, "");
}

TEST_F(AccountsTest, RefuseAnAccountThatMayNotUseThisService) {
  auto accounts = this->accounts();
  Login login;
  EXPECT_EQ(accounts.log_in("otto", "right", kPeer, login), LoginOutcome::kRefused);
}

TEST_F(AccountsTest, DenyAnAccountWithoutAGroup) {
  auto accounts = this->accounts();
  Login login;
  EXPECT_EQ(accounts.log_in("nora", "right", kPeer, login), LoginOutcome::kDenied);
  EXPECT_THAT(log_, Contains(HasSubstr("'nora' from 10.0.0.1 denied")));
  EXPECT_EQ(accounts.identify(request("Authorization", kNora)).kind, Identity::Kind::kDenied);
}

TEST_F(AccountsTest, NeverWriteAPasswordOrATokenIntoTheLog) {
  auto accounts = this->accounts();
  const std::string token = token_of(accounts);
  Login login;
  accounts.log_in("ada", "a wrong password", kPeer, login);
  for (const std::string& line : log_) {
    EXPECT_THAT(line, testing::Not(HasSubstr(token)));
    EXPECT_THAT(line, testing::Not(HasSubstr("password")));
    EXPECT_THAT(line, testing::Not(HasSubstr("right")));
  }
}

TEST_F(AccountsTest, MakeWhoeverGuessesWait) {
  auto accounts = this->accounts();
  Login login;
  for (int i = 0; i < 3; ++i) accounts.log_in("ada", "wrong", kPeer, login);
  EXPECT_EQ(accounts.log_in("ada", "right", kPeer, login), LoginOutcome::kLater);
  EXPECT_EQ(accounts.identify(request("Authorization", kAda)).kind, Identity::Kind::kLater);
  EXPECT_EQ(accounts.log_in("ada", "right", "10.0.0.2", login), LoginOutcome::kGranted);
  EXPECT_EQ(accounts.failed_logins(), 3U);
}

TEST_F(AccountsTest, KnowASessionByItsTokenAlone) {
  auto accounts = this->accounts();
  const std::string token = token_of(accounts), other = token_of(accounts, "rhea");
  EXPECT_NE(token, other);
  const Identity identity = accounts.identify(request("X-Auth-Token", token));
  EXPECT_EQ(identity.kind, Identity::Kind::kKnown);
  EXPECT_EQ(identity.caller.user, "ada");
  EXPECT_EQ(identity.caller.role, Role::kAdministrator);
  EXPECT_EQ(accounts.session(identity.caller.session)->user, "ada");
  for (const std::string& wrong :
       {std::string(), token.substr(1), token + "0", std::string(64, '0'), std::string("1")})
    EXPECT_EQ(accounts.identify(request("X-Auth-Token", wrong)).kind, Identity::Kind::kWrong) << wrong;
}

TEST_F(AccountsTest, EndASession) {
  auto accounts = this->accounts();
  const std::string token = token_of(accounts);
  const std::string id = accounts.sessions().front().id;
  EXPECT_TRUE(accounts.end_session(id));
  EXPECT_FALSE(accounts.end_session(id));
  EXPECT_FALSE(accounts.session(id).has_value());
  EXPECT_THAT(accounts.sessions(), testing::IsEmpty());
  EXPECT_EQ(accounts.identify(request("X-Auth-Token", token)).kind, Identity::Kind::kWrong);
}

TEST_F(AccountsTest, EndASessionThatRestsForTooLongAndNoOther) {
  auto accounts = this->accounts({.idle = 300ms});
  const std::string rests = token_of(accounts), works = token_of(accounts);
  for (int i = 0; i < 5; ++i) {
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(accounts.identify(request("X-Auth-Token", works)).kind, Identity::Kind::kKnown);
  }
  EXPECT_THAT(accounts.sessions(), SizeIs(1));
  EXPECT_FALSE(accounts.session("1").has_value());
  EXPECT_EQ(accounts.identify(request("X-Auth-Token", rests)).kind, Identity::Kind::kWrong);
}

TEST_F(AccountsTest, EndASessionHoweverBusyItIs) {
  auto accounts = this->accounts({.session = 300ms});
  const std::string token = token_of(accounts);
  EXPECT_EQ(accounts.identify(request("X-Auth-Token", token)).kind, Identity::Kind::kKnown);
  std::this_thread::sleep_for(310ms);
  EXPECT_EQ(accounts.identify(request("X-Auth-Token", token)).kind, Identity::Kind::kWrong);
}

TEST_F(AccountsTest, HaveNoMoreSessionsThanThereMayBe) {
  auto accounts = this->accounts({.sessions = 2, .idle = 200ms});
  token_of(accounts);
  token_of(accounts);
  Login login;
  EXPECT_EQ(accounts.log_in("ada", "right", kPeer, login), LoginOutcome::kTooMany);
  std::this_thread::sleep_for(210ms);
  token_of(accounts);
}

TEST_F(AccountsTest, GiveEachSessionItsOwnTokenAndName) {
  auto accounts = this->accounts();
  std::set<std::string> tokens;
  for (int i = 0; i < 64; ++i) tokens.insert(token_of(accounts));
  std::set<std::string> ids;
  for (const LoginSession& session : accounts.sessions()) ids.insert(session.id);
  EXPECT_THAT(tokens, SizeIs(64));
  EXPECT_THAT(ids, SizeIs(64));
}

TEST_F(AccountsTest, KnowAPasswordThatComesWithTheRequest) {
  auto accounts = this->accounts();
  const auto identity = accounts.identify(request("Authorization", kAda));
  EXPECT_EQ(identity.kind, Identity::Kind::kKnown);
  EXPECT_EQ(identity.caller.user, "ada");
  EXPECT_EQ(identity.caller.session, "");
  EXPECT_EQ(accounts.identify(request("Authorization", kAdaWrong)).kind, Identity::Kind::kWrong);
  EXPECT_EQ(accounts.identify(request("Authorization", "Bearer x")).kind, Identity::Kind::kWrong);
  EXPECT_EQ(accounts.identify(request("Accept", "x")).kind, Identity::Kind::kNobody);
  EXPECT_THAT(accounts.sessions(), testing::IsEmpty());
}

TEST_F(AccountsTest, AskTheSystemOnceForAPasswordThatComesAgainAndAgain) {
  auto accounts = this->accounts({.believed = 200ms});
  EXPECT_TRUE(accounts.has_to_ask(request("Authorization", kAda)));
  accounts.identify(request("Authorization", kAda));
  EXPECT_FALSE(accounts.has_to_ask(request("Authorization", kAda)));
  EXPECT_TRUE(accounts.has_to_ask(request("Authorization", kAdaWrong)));
  EXPECT_FALSE(accounts.has_to_ask(request("X-Auth-Token", "x")));
  std::this_thread::sleep_for(210ms);
  EXPECT_TRUE(accounts.has_to_ask(request("Authorization", kAda)));
}

TEST_F(AccountsTest, BelieveNoWrongPasswordBecauseTheRightOneCameBefore) {
  auto accounts = this->accounts();
  accounts.identify(request("Authorization", kAda));
  EXPECT_EQ(accounts.identify(request("Authorization", kAdaWrong)).kind, Identity::Kind::kWrong);
}

TEST_F(AccountsTest, ServeManyThreadsAtOnce) {
  auto accounts = this->accounts({.sessions = 1000});
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        const std::string token = token_of(accounts);
        const auto identity = accounts.identify(request("X-Auth-Token", token));
        EXPECT_EQ(identity.kind, Identity::Kind::kKnown);
        accounts.identify(request("Authorization", kAda));
        EXPECT_FALSE(accounts.sessions().empty());
        EXPECT_TRUE(accounts.end_session(identity.caller.session));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(accounts.sessions(), testing::IsEmpty());
}

}  // namespace
}  // namespace zymdb::service
