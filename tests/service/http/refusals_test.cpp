// Requests that are no good, as they come over the wire: each gets its status and the connection ends, and
// the next client is served.
#include "service/http/server_fixture.h"

namespace zymdb::service::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Refused {
  const char* what;
  const char* status;
  std::string request;
};

std::string get(const std::string& target, const std::string& headers = "Host: a\r\n") {
  return "GET " + target + " HTTP/1.1\r\n" + headers + "\r\n";
}

const Refused kRefused[] = {
    {"a path that leaves its root", "400", get("/../etc/passwd")},
    {"the same in escapes", "400", get("/%2e%2e/etc/passwd")},
    {"a NUL in the path", "400", get("/a%00b")},
    {"an end of line in the path", "400", get("/a%0d%0aX:%20y")},
    {"an escape that is none", "400", get("/%zz")},
    {"no host", "400", get("/", "")},
    {"two hosts", "400", get("/", "Host: a\r\nHost: b\r\n")},
    {"a host that is none", "400", get("/", "Host: a/b\r\n")},
    {"a length that is none", "400", get("/", "Host: a\r\nContent-Length: five\r\n")},
    {"a negative length", "400", get("/", "Host: a\r\nContent-Length: -5\r\n")},
    {"two lengths", "400", get("/", "Host: a\r\nContent-Length: 1\r\nContent-Length: 2\r\n") + "ab"},
    {"a body of 1 GB", "413",
     "POST / HTTP/1.1\r\nHost: a\r\nContent-Length: 1000000000\r\n\r\n" + std::string(9999, 'x')},
    {"a body of no stated length", "411",
     "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n0\r\n\r\n"},
    {"a length and another one", "400",
     "POST / HTTP/1.1\r\nHost: a\r\nTransfer-Encoding: chunked\r\nContent-Length: 5\r\n\r\n0\r\n\r\n"},
    {"a long path", "414", get("/" + std::string(5000, 'a'))},
    {"a path longer than memory for it", "414", get("/" + std::string(500000, 'a'))},
    {"long headers", "431", get("/", "Host: a\r\nX: " + std::string(20000, 'a') + "\r\n")},
    {"headers longer than memory for them", "431",
     get("/", "Host: a\r\nX: " + std::string(500000, 'a') + "\r\n")},
    {"a method that nobody knows", "501", "BREW / HTTP/1.1\r\nHost: a\r\n\r\n"},
    {"another protocol", "", std::string("\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03\r\n\r\n", 15)},
    {"no request at all", "", "\r\n\r\n\r\nhello\r\n\r\n"},
};

TEST_F(ServerTest, RefusesWhatIsNoGoodAndGoesOn) {
  start();
  for (const Refused& each : kRefused) {
    auto client = this->client();
    client.send(each.request);
    const std::string answer = client.receive_to_end();
    const std::string expected = *each.status != '\0' ? std::string("HTTP/1.1 ") + each.status : "";
    EXPECT_THAT(answer, StartsWith(expected)) << each.what;
    EXPECT_EQ(this->client().ask("GET", "/next").status, 200) << each.what;
  }
}

TEST_F(ServerTest, RefusesInTheWordsOfWhoeverAnswersThere) {
  start();
  auto client = this->client();
  client.send("POST /redfish/v1 HTTP/1.1\r\nHost: a\r\nContent-Length: 70000\r\n\r\n");
  const Reply reply = client.receive();
  EXPECT_EQ(reply.status, 413);
  EXPECT_EQ(reply.header("Content-Type"), "application/json");
  EXPECT_EQ(reply.body, "{\"refused\": \"/redfish/v1\"}");
}

TEST_F(ServerTest, DoesNotAskForABodyThatItWillNotTake) {
  start();
  auto client = this->client();
  client.send("POST /body HTTP/1.1\r\nHost: a\r\nContent-Length: 1000000000\r\nExpect: 100-continue\r\n\r\n");
  EXPECT_EQ(client.receive().status, 413);
}

// Each on a connection of its own, so that none is taken for what follows another.
TEST_F(ServerTest, OutlivesEveryCutOfARequest) {
  start();
  const std::string request = "POST /body HTTP/1.1\r\nHost: a\r\nContent-Length: 3\r\n\r\nabc";
  for (size_t size = 0; size < request.size(); ++size) client().send(request.substr(0, size));
  EXPECT_EQ(client().ask("GET", "/next").status, 200);
  // Long before they took too long.
  EXPECT_TRUE(eventually([&] { return server_->connections() == 0; }, std::chrono::seconds(5)));
}

TEST_F(ServerTest, OutlivesEveryByteOfARequestBeingAnother) {
  start();
  const std::string request = "GET /body?a=b HTTP/1.1\r\nHost: a\r\nAccept: b\r\n\r\n";
  for (size_t at = 0; at < request.size(); ++at) {
    for (const char other : {'\0', '\r', '\n', ' ', ':', '%', '\xff'}) {
      std::string changed = request;
      changed[at] = other;
      client().send(changed);
    }
  }
  EXPECT_EQ(client().ask("GET", "/next").status, 200);
}

}  // namespace
}  // namespace zymdb::service::test
