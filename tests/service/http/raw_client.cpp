#include "service/http/raw_client.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace zymdb::service::test {

std::string Reply::header(const std::string& name) const {
  const std::string key = "\r\n" + name + ": ";
  const size_t at = head.find(key);
  return at == std::string::npos ? ""
                                 : head.substr(at + key.size(), head.find("\r\n", at + 2) - at - key.size());
}

RawClient::RawClient(const Address& server, std::chrono::milliseconds patience)
    : descriptor_(socket(server.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  const timeval longest{patience.count() / 1000, patience.count() % 1000 * 1000};
  setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
  setsockopt(descriptor_, SOL_SOCKET, SO_SNDTIMEO, &longest, sizeof longest);
  EXPECT_EQ(connect(descriptor_, reinterpret_cast<const sockaddr*>(&server.storage), server.length), 0);
}

RawClient::~RawClient() {
  close(descriptor_);
}

bool RawClient::send(const std::string& text) const {
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t count = ::send(descriptor_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<size_t>(count);
  }
  return true;
}

bool RawClient::read_more() {
  char block[65536];
  const ssize_t count = recv(descriptor_, block, sizeof block, 0);
  EXPECT_FALSE(count < 0 && errno == EAGAIN) << "no answer; so far: " << received_.substr(0, 500);
  if (count > 0) received_.append(block, static_cast<size_t>(count));
  return count > 0;
}

Reply RawClient::receive(bool has_body) {
  size_t end = 0;
  while ((end = received_.find("\r\n\r\n")) == std::string::npos) {
    if (!read_more()) return {};
  }
  Reply reply;
  reply.head = received_.substr(0, end + 2);
  received_.erase(0, end + 4);
  reply.status = std::atoi(reply.head.c_str() + sizeof("HTTP/1.1"));
  const size_t length = has_body ? std::strtoul(reply.header("Content-Length").c_str(), nullptr, 10) : 0;
  while (received_.size() < length && read_more()) {
  }
  reply.body = received_.substr(0, length);
  received_.erase(0, length);
  return reply;
}

Reply RawClient::ask(const std::string& method, const std::string& target, const std::string& headers,
                     const std::string& body) {
  const std::string length = body.empty() ? "" : "Content-Length: " + std::to_string(body.size()) + "\r\n";
  EXPECT_TRUE(
      send(method + " " + target + " HTTP/1.1\r\nHost: localhost\r\n" + headers + length + "\r\n" + body));
  return receive(method != "HEAD");
}

std::string RawClient::receive_to_end() {
  while (read_more()) {
  }
  return std::exchange(received_, {});
}

std::string RawClient::receive_at_least(size_t size) {
  while (received_.size() < size && read_more()) {
  }
  return std::exchange(received_, {});
}

bool RawClient::is_closed() {
  pollfd ready{descriptor_, POLLIN, 0};
  char byte = 0;
  return poll(&ready, 1, 0) > 0 && recv(descriptor_, &byte, 1, MSG_PEEK) <= 0;
}

}  // namespace zymdb::service::test
