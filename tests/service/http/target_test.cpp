// What a request line, a Host header and an Authorization header say.
#include "service/http/target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zymdb::service {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(Target, IsThePathAndTheParametersDecoded) {
  const auto target = parse_target("/redfish/v1/Slot%201?$expand=.%28a%29&empty&a+b=c%2Bd&=x");
  ASSERT_TRUE(target);
  EXPECT_EQ(target->path, "/redfish/v1/Slot 1");
  EXPECT_THAT(target->query,
              ElementsAre(Pair("$expand", ".(a)"), Pair("empty", ""), Pair("a b", "c+d"), Pair("", "x")));
}

TEST(Target, KeepsABlankInThePathThatIsWrittenAsAPlus) {
  EXPECT_EQ(parse_target("/a+b")->path, "/a+b");
}

TEST(Target, MayNameTheHostAsForAProxy) {
  EXPECT_EQ(parse_target("http://server/metrics")->path, "/metrics");
  EXPECT_EQ(parse_target("HTTPS://server:8443")->path, "/");
}

TEST(Target, IsRefusedWhereItCouldMeanAnotherPlace) {
  for (const char* text : {"",
                           "*",
                           "metrics",
                           "/..",
                           "/../etc/passwd",
                           "/a/../b",
                           "/%2e%2e/x",
                           "/a/%2E%2e",
                           "/./a",
                           "/a/.",
                           "/a%00b",
                           "/%00",
                           "/a%0d%0aSet-Cookie:x",
                           "/\x7f",
                           "/%7f",
                           "/%",
                           "/%4",
                           "/%zz",
                           "/%-1",
                           "/%ff",
                           "/\xc3",
                           "/?a=%00",
                           "/?%zz=1",
                           "/?a=%c3%28",
                           "/..%2f..%2fetc",
                           "/%2e%2e%2fetc"})
    EXPECT_FALSE(parse_target(text)) << text;
}

TEST(Target, OfDotsWithinANameIsAName) {
  EXPECT_EQ(parse_target("/a..b/...")->path, "/a..b/...");
}

TEST(Credentials, AreUserAndPassword) {
  const auto credentials = parse_basic("basic  YWRhOnJpZ2h0OnNlY3JldA==");
  ASSERT_TRUE(credentials);
  EXPECT_EQ(credentials->user, "ada");
  EXPECT_EQ(credentials->password, "right:secret");
}

TEST(Credentials, AreNothingElse) {
  for (const char* text : {"", "Basic", "Basic ", "Bearer YWRhOng=", "Basic YWRh", "Basic %%%",
                           "Basic OnBhc3N3b3Jk", "Basic YWQAYTp4", "Basic YWRhOgB4"})
    EXPECT_FALSE(parse_basic(text)) << text;
}

TEST(Host, IsANameOrAnAddressWithPerhapsAPort) {
  for (const char* text : {"server", "server.example:8000", "127.0.0.1", "[::1]:8443", "[fe80::1]"})
    EXPECT_TRUE(is_host(text)) << text;
  for (const char* text :
       {"", "a b", "server:port", "server:123456", "[::1", "a/b", "a@b", "server:80:80", "a\tb"})
    EXPECT_FALSE(is_host(text)) << text;
}

TEST(Host, OfThisMachineIsNoNameThatSomebodyElseGives) {
  for (const char* text : {"localhost", "LOCALHOST:8000", "127.0.0.1:8000", "127.1.2.3", "[::1]:8000"})
    EXPECT_TRUE(is_loopback_host(text)) << text;
  for (const char* text :
       {"evil.example", "127.0.0.1.evil.example", "localhost.evil.example", "127.evil", "[::2]", ""})
    EXPECT_FALSE(is_loopback_host(text)) << text;
}

}  // namespace
}  // namespace zymdb::service
