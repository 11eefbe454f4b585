// What a client that does everything right gets.
#include "service/http/server_fixture.h"

namespace zymdb::service::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST_F(ServerTest, AnswersOneRequestAfterTheOtherOnAConnection) {
  start();
  auto client = this->client();
  for (int i = 0; i < 10; ++i) {
    const Reply reply = client.ask("GET", "/" + std::to_string(i));
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "answer to /" + std::to_string(i));
  }
  EXPECT_EQ(server_->connections(), 1U);
}

TEST_F(ServerTest, AnswersRequestsThatCameTogether) {
  start();
  auto client = this->client();
  const std::string request = " HTTP/1.1\r\nHost: localhost\r\n\r\n";
  ASSERT_TRUE(client.send("GET /1" + request + "GET /2" + request));
  EXPECT_EQ(client.receive().body, "answer to /1");
  EXPECT_EQ(client.receive().body, "answer to /2");
}

TEST_F(ServerTest, HasTheBodyOfARequest) {
  start();
  const std::string body(65536, 'b');
  auto client = this->client();
  EXPECT_EQ(client.ask("POST", "/body", "", body).body, body);
  EXPECT_EQ(client.ask("PATCH", "/body", "", "another").body, "another");
  EXPECT_EQ(client.ask("GET", "/body", "", "of a GET").body, "of a GET");
  EXPECT_EQ(client.ask("GET", "/next").body, "answer to /next");
}

TEST_F(ServerTest, TellsAClientThatAsksFirstToGoOn) {
  start();
  auto client = this->client();
  ASSERT_TRUE(
      client.send("POST /body HTTP/1.1\r\nHost: a\r\nContent-Length: 2\r\nExpect: 100-continue\r\n\r\n"));
  EXPECT_EQ(client.receive(false).status, 100);
  ASSERT_TRUE(client.send("ok"));
  EXPECT_EQ(client.receive().body, "ok");
}

TEST_F(ServerTest, AnswersHeadAsGetWithoutABody) {
  start();
  auto client = this->client();
  const Reply reply = client.ask("HEAD", "/large");
  EXPECT_EQ(reply.status, 200);
  EXPECT_EQ(reply.header("Content-Length"), "3000000");
  EXPECT_EQ(client.ask("GET", "/next").body, "answer to /next");
}

TEST_F(ServerTest, KnowsWhereAClientComesFrom) {
  start();
  EXPECT_EQ(client().ask("GET", "/peer").body, "127.0.0.1");
}

TEST_F(ServerTest, CompressesForThoseWhoTakeIt) {
  start();
  auto client = this->client();
  const Reply plain = client.ask("GET", "/large");
  EXPECT_EQ(plain.header("Content-Encoding"), "");
  EXPECT_EQ(plain.header("Vary"), "Accept-Encoding");
  EXPECT_EQ(plain.header("ETag"), "\"tag\"");
  EXPECT_EQ(plain.body.size(), 3000000U);
  for (int i = 0; i < 2; ++i) {
    const Reply packed = client.ask("GET", "/large", "Accept-Encoding: deflate, gzip\r\n");
    EXPECT_EQ(packed.header("Content-Encoding"), "gzip");
    EXPECT_EQ(packed.header("Vary"), "Accept-Encoding");
    EXPECT_EQ(packed.header("ETag"), "W/\"tag\"");
    EXPECT_LT(packed.body.size(), 10000U);
  }
}

TEST_F(ServerTest, DecompressesForThoseWhoDoNotTakeIt) {
  start();
  auto client = this->client();
  EXPECT_EQ(client.ask("GET", "/compressed").body, "a text that is kept compressed");
  EXPECT_EQ(client.ask("HEAD", "/compressed").header("Content-Length"), "30");
  const Reply packed = client.ask("GET", "/compressed", "Accept-Encoding: gzip\r\n");
  EXPECT_EQ(packed.header("Content-Encoding"), "gzip");
  EXPECT_EQ(gunzip(packed.body), "a text that is kept compressed");
}

TEST_F(ServerTest, AnswersHttp10AndCloses) {
  start();
  auto client = this->client();
  ASSERT_TRUE(client.send("GET /old HTTP/1.0\r\n\r\n"));
  EXPECT_THAT(client.receive_to_end(), EndsWith("\r\n\r\nanswer to /old"));
}

TEST_F(ServerTest, ClosesWhenItIsAskedTo) {
  start();
  auto client = this->client();
  ASSERT_TRUE(client.send("GET /last HTTP/1.1\r\nHost: a\r\nConnection: close\r\n\r\n"));
  EXPECT_THAT(client.receive_to_end(), EndsWith("answer to /last"));
  EXPECT_TRUE(eventually([&] { return server_->connections() == 0; }));
}

TEST_F(ServerTest, ThatAHandlerFailsIsAnAnswerAndTheNextRequestGoesOn) {
  start();
  auto client = this->client();
  EXPECT_EQ(client.ask("GET", "/throw").status, 503);
  EXPECT_EQ(client.ask("GET", "/next").status, 200);
}

TEST_F(ServerTest, AnswersOthersWhileALoginTakesItsTime) {
  start({.threads = 2, .is_slow = [](const Request& request) { return request.path == "/wait"; }});
  auto slow = client(), second = client();
  const std::string request = " HTTP/1.1\r\nHost: a\r\n\r\n";
  ASSERT_TRUE(slow.send("GET /wait" + request));
  for (int i = 0; i < 20; ++i) EXPECT_EQ(client().ask("GET", "/quick").status, 200);
  EXPECT_FALSE(slow.is_closed());
  ASSERT_TRUE(second.send("GET /wait" + request));
  EXPECT_EQ(slow.receive().body, "answer to /wait");
  EXPECT_EQ(second.receive().body, "answer to /wait");
}

TEST_F(ServerTest, SaysToWhomItCannotTakeOnASlowRequestThatItIsBusy) {
  Limits limits;
  limits.waiting_requests = 0;
  start({.limits = limits, .is_slow = [](const Request&) { return true; }});
  const Reply reply = client().ask("GET", "/x");
  EXPECT_EQ(reply.status, 503);
  EXPECT_NE(reply.header("Retry-After"), "");
}

TEST_F(ServerTest, GivesTheAnswersThatItBeganBeforeItEnds) {
  start({.is_slow = [](const Request& request) { return request.path == "/wait"; }});
  auto client = this->client();
  ASSERT_TRUE(client.send("GET /wait HTTP/1.1\r\nHost: a\r\n\r\n"));
  std::thread ends([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    server_.reset();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  handler_.waiting.count_down();
  EXPECT_EQ(client.receive().body, "answer to /wait");
  ends.join();
  EXPECT_EQ(client.receive_to_end(), "");
}

TEST_F(ServerTest, TellsEachAnswerToWhomItConcerns) {
  std::mutex mutex;
  std::vector<int> told;
  start({.observe = [&](const Request&, int status, std::chrono::nanoseconds time) {
    const std::lock_guard lock(mutex);
    told.push_back(status);
    EXPECT_GE(time.count(), 0);
  }});
  client().ask("GET", "/x");
  client().ask("BREW", "/x");
  server_.reset();
  EXPECT_THAT(told, testing::ElementsAre(200, 501));
}

TEST_F(ServerTest, ListensOnIpv6Too) {
  Socket socket = listen_at(*parse_address("[::1]:0"));
  const Address address = socket.address();
  const Server server(handler_, std::move(socket), {});
  EXPECT_EQ(RawClient(address).ask("GET", "/peer").body, "::1");
}

}  // namespace
}  // namespace zymdb::service::test
