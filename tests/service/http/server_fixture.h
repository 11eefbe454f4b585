// A server on a free port, and a handler that does what the path says.
#ifndef ZYMDB_TESTS_SERVICE_HTTP_SERVER_FIXTURE_H
#define ZYMDB_TESTS_SERVICE_HTTP_SERVER_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "service/http/compression.h"
#include "service/http/raw_client.h"
#include "service/http/server.h"

namespace zymdb::service::test {

// What a test puts into it comes out.
class FilledStream : public Stream {
 public:
  std::string take() override {
    const std::lock_guard lock(mutex_);
    return std::exchange(text_, {});
  }
  bool is_over() const override { return is_over_; }

  void put(const std::string& text) {
    const std::lock_guard lock(mutex_);
    text_ += text;
  }
  void end() { is_over_ = true; }

 private:
  std::mutex mutex_;
  std::string text_;
  std::atomic<bool> is_over_ = false;
};

class TestHandler : public Handler {
 public:
  Response answer(const Request& request) override {
    if (request.path == "/body") return Response::of(200, "text/plain", request.body);
    if (request.path == "/large") return large_;
    if (request.path == "/compressed") return compressed_;
    // More than the system keeps for a client that reads nothing.
    if (request.path == "/huge") return Response::of(200, "image/png", std::string(64 << 20, 'x'));
    if (request.path == "/peer") return Response::of(200, "text/plain", request.peer);
    if (request.path == "/throw") throw std::runtime_error("thrown");
    if (request.path == "/stream") return streaming();
    if (request.path == "/wait") waiting.arrive_and_wait();
    return Response::of(200, "text/plain", "answer to " + request.path);
  }
  Response refuse(int status, const Request& request) override {
    return Response::of(status, "application/json", "{\"refused\": \"" + request.path + "\"}");
  }

  std::shared_ptr<FilledStream> stream() {
    const std::lock_guard lock(mutex_);
    return streams_.empty() ? nullptr : streams_.back();
  }

  std::latch waiting{2};

 private:
  Response streaming() {
    const std::lock_guard lock(mutex_);
    streams_.push_back(std::make_shared<FilledStream>());
    return {.headers = {{"Content-Type", "text/event-stream"}}, .stream = streams_.back()};
  }

  const Response large_ = [] {
    Response response = Response::of(200, "text/plain", std::string(3000000, 'x'));
    response.headers.emplace_back("ETag", "\"tag\"");
    return response;
  }();
  const Response compressed_{
      .headers = {{"Content-Type", "text/plain"}},
      .gzip = std::make_shared<const std::string>(gzip("a text that is kept compressed"))};
  std::mutex mutex_;
  std::vector<std::shared_ptr<FilledStream>> streams_;
};

class ServerTest : public testing::Test {
 protected:
  void start(ServerOptions options = {}) {
    Socket socket = listen_at(*parse_address("127.0.0.1:0"));
    address_ = socket.address();
    server_ = std::make_unique<Server>(handler_, std::move(socket), options);
  }
  void start(const Limits& limits) { start({.limits = limits}); }

  RawClient client(std::chrono::milliseconds patience = std::chrono::seconds(20)) const {
    return RawClient(address_, patience);
  }

  // Until it holds, for as long.
  template <class Condition>
  static bool eventually(Condition condition, std::chrono::milliseconds longest = std::chrono::seconds(20)) {
    for (int i = 0; i < longest.count() / 10 && !condition(); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
  }

  TestHandler handler_;
  Address address_;
  std::unique_ptr<Server> server_;
};

}  // namespace zymdb::service::test

#endif
