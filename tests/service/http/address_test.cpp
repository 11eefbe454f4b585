// Where the service may listen.
#include "service/http/address.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zymdb::service {
namespace {

TEST(Address, IsAnAddressAndAPort) {
  for (const char* text : {"127.0.0.1:8000", "0.0.0.0:0", "[::1]:8443", "[::]:65535"}) {
    const auto address = parse_address(text);
    ASSERT_TRUE(address) << text;
    EXPECT_EQ(address->text(), text);
  }
  EXPECT_EQ(parse_address("localhost:80")->text(), "127.0.0.1:80");
}

TEST(Address, IsNothingElse) {
  for (const char* text :
       {"", ":", "8000", ":8000", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1",
        "127.0.0.1:80x", "server:80", "::1:80", "[::1]", "[::1:80", "[127.0.0.1]:80", "1.2.3:80"})
    EXPECT_FALSE(parse_address(text)) << text;
}

TEST(Address, OfThisMachineAloneIsKnown) {
  for (const char* text : {"127.0.0.1:1", "127.9.9.9:1", "[::1]:1", "[::ffff:127.0.0.1]:1"})
    EXPECT_TRUE(parse_address(text)->is_loopback()) << text;
  for (const char* text :
       {"0.0.0.0:1", "10.0.0.1:1", "[::]:1", "[fe80::1]:1", "[::ffff:10.0.0.1]:1", "[::ffff:0:0]:1"})
    EXPECT_FALSE(parse_address(text)->is_loopback()) << text;
}

TEST(Address, OfAMappedOneIsTheSameHost) {
  EXPECT_EQ(parse_address("[::ffff:10.0.0.1]:1")->host(), "10.0.0.1");
}

TEST(Socket, ListensWhereItWasTold) {
  const Socket socket = listen_at(*parse_address("127.0.0.1:0"));
  EXPECT_NE(socket.address().text(), "127.0.0.1:0");
  EXPECT_TRUE(socket.address().is_loopback());
}

TEST(Socket, OfATakenPortSaysSo) {
  const Socket first = listen_at(*parse_address("127.0.0.1:0"));
  try {
    listen_at(first.address());
    FAIL();
  } catch (const ServiceError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr(first.address().text() + ": Address already in use"));
  }
}

TEST(Socket, ThatDoesNotListenIsRefused) {
  EXPECT_THROW(listening(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), ServiceError);
  EXPECT_THROW(listening(-1), ServiceError);
}

}  // namespace
}  // namespace zymdb::service
