// Many clients of every kind at once.
#include "service/http/server_fixture.h"

namespace zymdb::service::test {
namespace {

constexpr int kClients = 8, kRounds = 60;

TEST_F(ServerTest, ServesEverybodyAtOnceAndEndsInTheMiddleOfIt) {
  start({.threads = 4, .is_slow = [](const Request& request) { return request.path == "/slow"; }});
  std::atomic<int> good = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < kClients; ++number) {
    threads.emplace_back([&, number] {
      for (int round = 0; round < kRounds; ++round) {
        RawClient client(address_);
        const std::string body = std::to_string(number) + " " + std::to_string(round);
        good += client.ask("POST", "/body", "", body).body == body;
        good += client.ask("GET", "/slow").body == "answer to /slow";
        good += client.ask("GET", "/large", "Accept-Encoding: gzip\r\n").status == 200;
        good += client.ask("BREW", "/x").status == 501;
        if (round % 10 == 0) RawClient(address_).send("GET /stream HTTP/1.1\r\nHost: a\r\n\r\n");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, kClients * kRounds * 4);

  std::vector<std::unique_ptr<RawClient>> left;
  for (int i = 0; i < 20; ++i) {
    left.push_back(std::make_unique<RawClient>(address_));
    left.back()->send(i % 2 == 0 ? "GET /stream HTTP/1.1\r\nHost: a\r\n\r\n"
                                 : "GET /slow HTTP/1.1\r\nHost: a\r\n\r\n");
  }
  server_.reset();
}

}  // namespace
}  // namespace zymdb::service::test
