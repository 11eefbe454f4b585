// Clients that take too long, or are too many.
#include <fcntl.h>

#include <chrono>
#include <deque>

#include "service/http/server_fixture.h"

namespace zymdb::service::test {
namespace {

using namespace std::chrono_literals;
using testing::StartsWith;

Limits quick() {
  Limits limits;
  limits.receiving = 400ms;
  limits.sending = 400ms;
  limits.idle = 400ms;
  return limits;
}

TEST_F(ServerTest, TellsAClientThatSendsHalfARequestThatItTookTooLong) {
  start(quick());
  for (const char* half : {"G", "GET / HTTP/1.1\r\n", "GET / HTTP/1.1\r\nHost: a\r\n",
                           "POST /body HTTP/1.1\r\nHost: a\r\nContent-Length: 5\r\n\r\nab"}) {
    auto client = this->client();
    client.send(half);
    EXPECT_THAT(client.receive_to_end(), StartsWith("HTTP/1.1 408 Request Timeout\r\n")) << half;
  }
}

TEST_F(ServerTest, DoesNotLetAClientSendForEverByteByByte) {
  start(quick());
  auto client = this->client();
  const auto begin = std::chrono::steady_clock::now();
  const std::string request = "GET /" + std::string(1000, 'a');
  for (const char c : request) {
    if (client.is_closed() || !client.send(std::string(1, c))) break;
    std::this_thread::sleep_for(20ms);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

TEST_F(ServerTest, ClosesAConnectionThatRestsWithoutAWord) {
  start(quick());
  auto client = this->client();
  EXPECT_EQ(client.ask("GET", "/x").status, 200);
  EXPECT_EQ(client.receive_to_end(), "");
}

TEST_F(ServerTest, ClosesAConnectionThatTakesNothing) {
  start(quick());
  auto client = this->client();
  ASSERT_TRUE(client.send("GET /huge HTTP/1.1\r\nHost: a\r\n\r\n"));
  EXPECT_TRUE(eventually([&] { return server_->connections() == 1; }));
  EXPECT_TRUE(eventually([&] { return server_->connections() == 0; }));
  EXPECT_LT(client.receive_to_end().size(), size_t{64} << 20);
}

TEST_F(ServerTest, TellsOneClientTooManyToComeAgain) {
  Limits limits;
  limits.connections = 4;
  start(limits);
  std::deque<RawClient> clients;
  for (int i = 0; i < 4; ++i) EXPECT_EQ(clients.emplace_back(address_).ask("GET", "/x").status, 200);
  const Reply reply = client().ask("GET", "/x");
  EXPECT_EQ(reply.status, 503);
  EXPECT_NE(reply.header("Retry-After"), "");
  EXPECT_EQ(reply.header("Connection"), "close");
  clients.clear();
  EXPECT_TRUE(eventually([&] { return client().ask("GET", "/x").status == 200; }));
}

TEST_F(ServerTest, LeavesRoomForOtherAddresses) {
  Limits limits;
  limits.connections_of_an_address = 2;
  start(limits);
  auto first = client(), second = client();
  EXPECT_EQ(first.ask("GET", "/x").status, 200);
  EXPECT_EQ(second.ask("GET", "/x").status, 200);
  EXPECT_EQ(client().ask("GET", "/x").status, 503);
}

TEST_F(ServerTest, ServesAgainAfterThousandsOfConnectionsThatSaidNothing) {
  start(quick());
  int most = 0;
  for (int round = 0; round < 20; ++round) {
    std::vector<Socket> silent;
    for (int i = 0; i < 500; ++i) {
      Socket& socket = silent.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
      if (socket.descriptor() < 0) break;
      connect(socket.descriptor(), reinterpret_cast<const sockaddr*>(&address_.storage), address_.length);
      ++most;
    }
  }
  EXPECT_GT(most, 5000);
  EXPECT_TRUE(eventually([&] { return server_->connections() == 0; }));
  EXPECT_EQ(client().ask("GET", "/x").status, 200);
}

}  // namespace
}  // namespace zymdb::service::test
