// Answers that go on: events, as they happen.
#include "service/http/server_fixture.h"

namespace zymdb::service::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr char kAsk[] = "GET /stream HTTP/1.1\r\nHost: a\r\n\r\n";

class StreamTest : public ServerTest {
 protected:
  std::shared_ptr<FilledStream> opened(RawClient& client, unsigned number = 1) {
    EXPECT_TRUE(client.send(kAsk));
    EXPECT_TRUE(
        eventually([&] { return handler_.stream() != nullptr && handler_.stream().use_count() > 1; }));
    EXPECT_EQ(client.receive(false).status, 200) << number;
    return handler_.stream();
  }
};

TEST_F(StreamTest, SendsWhatThereIsWhenThereIsSomething) {
  start();
  auto client = this->client();
  const auto stream = opened(client);
  for (const char* event : {"data: 1\n\n", "data: 2\n\n", "data: 3\n\n"}) {
    stream->put(event);
    EXPECT_THAT(client.receive_at_least(1), HasSubstr(event));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  stream->put("last");
  stream->end();
  EXPECT_THAT(client.receive_at_least(10), EndsWith("0\r\n\r\n"));
  EXPECT_EQ(client.ask("GET", "/next").status, 200);
}

TEST_F(StreamTest, SendsManyPiecesWhole) {
  start();
  auto client = this->client();
  const auto stream = opened(client);
  stream->put(std::string(1000000, 'x') + "end");
  std::string all;
  while (all.find("end") == std::string::npos) {
    const std::string more = client.receive_at_least(1);
    ASSERT_NE(more, "");
    all += more;
  }
  EXPECT_EQ(std::ranges::count(all, 'x'), 1000000);
}

TEST_F(StreamTest, LetsGoOfAClientThatWentAway) {
  start();
  {
    auto client = this->client();
    opened(client);
  }
  EXPECT_TRUE(eventually([&] { return server_->connections() == 0; }));
}

TEST_F(StreamTest, AreNoMoreThanThereMayBe) {
  Limits limits;
  limits.streams = 1;
  start(limits);
  auto first = client();
  const auto stream = opened(first);
  const Reply reply = client().ask("GET", "/stream");
  EXPECT_EQ(reply.status, 503);
  EXPECT_NE(reply.header("Retry-After"), "");
  stream->end();
  EXPECT_THAT(first.receive_at_least(5), EndsWith("0\r\n\r\n"));
  auto again = client();
  opened(again);
}

TEST_F(StreamTest, EndsWithTheServer) {
  start();
  auto client = this->client();
  opened(client);
  const auto begin = std::chrono::steady_clock::now();
  server_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4));
  EXPECT_THAT(client.receive_to_end(), EndsWith("0\r\n\r\n"));
}

TEST_F(StreamTest, HasNoBodyForHead) {
  start();
  auto client = this->client();
  EXPECT_EQ(client.ask("HEAD", "/stream").status, 200);
  EXPECT_EQ(client.ask("GET", "/next").status, 200);
}

}  // namespace
}  // namespace zymdb::service::test
