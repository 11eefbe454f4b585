// What an address says, and which ones say nothing that could be done.
#include "client/engine/mariadb/address.h"

#include <gmock/gmock.h>

namespace zymdb::client::mariadb {
namespace {

Address parsed(std::string_view text) {
  Address address;
  std::string error;
  EXPECT_TRUE(parse_address(text, address, error)) << text << ": " << error;
  return address;
}

std::string refusal_of(std::string_view text) {
  Address address;
  std::string error;
  EXPECT_FALSE(parse_address(text, address, error)) << text;
  return error;
}

TEST(AddressTest, NamesAUserHostsAndADatabase) {
  const Address address = parsed("//bmc@db1,db2:3307,[fe80::1]:4000,[::2]/inventory");
  EXPECT_EQ(address.user, "bmc");
  EXPECT_EQ(address.database, "inventory");
  std::string hosts;
  for (const Host& host : address.hosts) hosts += describe(address, host) + " ";
  EXPECT_EQ(hosts, "db1:3306 db2:3307 [fe80::1]:4000 [::2]:3306 ");
}

TEST(AddressTest, AServerElsewhereHasToProveWhoItIs) {
  EXPECT_EQ(parsed("//a@db/i").tls, Tls::kVerify);
  EXPECT_EQ(parsed("//a@localhost,db/i").tls, Tls::kVerify);
  EXPECT_EQ(parsed("//a@127.evil.example/i").tls, Tls::kVerify);
  EXPECT_EQ(parsed("//a@db/i?tls=required").tls, Tls::kRequired);
  EXPECT_EQ(parsed("//a@db/i?ca=/etc/ca.pem").authority, "/etc/ca.pem");
  EXPECT_EQ(parsed("//a@localhost/i").tls, Tls::kOff);
  EXPECT_EQ(parsed("//a@127.0.0.1/i?tls=verify").tls, Tls::kVerify);
  EXPECT_THAT(refusal_of("//a@db/i?tls=off"), testing::HasSubstr("for this machine alone"));
}

TEST(AddressTest, ASocketIsOfThisMachine) {
  EXPECT_EQ(parsed("//a@localhost/i?socket=/run/s&password-file=/etc/p").socket, "/run/s");
  EXPECT_EQ(parsed("//a@localhost/i?socket=/run/s&password-file=/etc/p").password_file, "/etc/p");
  EXPECT_THAT(refusal_of("//a@db/i?socket=/run/s"), testing::HasSubstr("for localhost alone"));
}

TEST(AddressTest, APasswordIsRefused) {
  for (const char* text : {"//a:secret@db/i", "//a@secret@db/i", "//a@db/i?password=secret"})
    EXPECT_THAT(refusal_of(text), testing::HasSubstr("holds a password")) << text;
}

TEST(AddressTest, AnythingElseIsRefused) {
  for (const char* text : {"",
                           "/",
                           "//",
                           "//a",
                           "//a@",
                           "//a@db",
                           "//a@db/",
                           "//@db/i",
                           "//db/i",
                           "a@db/i",
                           "//a@/i",
                           "//a@db,/i",
                           "//a@,db/i",
                           "//a@db:/i",
                           "//a@db:0/i",
                           "//a@db:65536/i",
                           "//a@db:x/i",
                           "//a@db:3306x/i",
                           "//a@d b/i",
                           "//a@[::1/i",
                           "//a@[]/i",
                           "//a@[::1]x/i",
                           "//a@db/i/j",
                           "//a@db/i`",
                           "//a@db/i;DROP",
                           "//a b@db/i",
                           "//a'@db/i",
                           "//a@db/i?x",
                           "//a@db/i?tls",
                           "//a@db/i?tls=",
                           "//a@db/i?tls=on",
                           "//a@localhost/i?socket=s",
                           "//a@localhost/i?socket=",
                           "//a@db/i?password-file=p",
                           "//a@db/i?tls=verify&y=1",
                           "//a@db/i??"})
    EXPECT_FALSE(refusal_of(text).empty()) << text;
  EXPECT_FALSE(refusal_of("//a@db/" + std::string(65, 'i')).empty());
}

}  // namespace
}  // namespace zymdb::client::mariadb
