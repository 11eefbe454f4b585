#include "service/http/address.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <system_error>
#include <utility>

namespace zymdb::service {
namespace {

const sockaddr_in& v4(const Address& address) {
  return reinterpret_cast<const sockaddr_in&>(address.storage);
}

const sockaddr_in6& v6(const Address& address) {
  return reinterpret_cast<const sockaddr_in6&>(address.storage);
}

// An IPv4 address within an IPv6 one is the former.
bool is_mapped(const Address& address) {
  return IN6_IS_ADDR_V4MAPPED(&v6(address).sin6_addr);
}

std::optional<uint16_t> parse_port(std::string_view text) {
  uint16_t port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
  return port;
}

[[noreturn]] void fail(const std::string& action, const Address& address) {
  throw ServiceError("cannot " + action + " " + address.text() + ": " +
                     std::generic_category().message(errno));
}

}  // namespace

bool Address::is_loopback() const {
  constexpr uint32_t kNet = 127;
  if (storage.ss_family == AF_UNIX) return true;
  if (storage.ss_family == AF_INET) return ntohl(v4(*this).sin_addr.s_addr) >> 24 == kNet;
  if (storage.ss_family != AF_INET6) return false;
  return IN6_IS_ADDR_LOOPBACK(&v6(*this).sin6_addr) ||
         (is_mapped(*this) && v6(*this).sin6_addr.s6_addr[12] == kNet);
}

std::string Address::host() const {
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (storage.ss_family == AF_INET) return inet_ntop(AF_INET, &v4(*this).sin_addr, text.data(), text.size());
  if (storage.ss_family != AF_INET6) return "local";
  if (is_mapped(*this)) return inet_ntop(AF_INET, &v6(*this).sin6_addr.s6_addr[12], text.data(), text.size());
  return inet_ntop(AF_INET6, &v6(*this).sin6_addr, text.data(), text.size());
}

std::string Address::text() const {
  if (storage.ss_family == AF_INET) return host() + ":" + std::to_string(ntohs(v4(*this).sin_port));
  if (storage.ss_family == AF_INET6) return "[" + host() + "]:" + std::to_string(ntohs(v6(*this).sin6_port));
  return host();
}

std::optional<Address> parse_address(std::string_view text) {
  const size_t colon = text.rfind(':');
  if (colon == std::string_view::npos) return {};
  const auto port = parse_port(text.substr(colon + 1));
  if (!port) return {};
  std::string host(text.substr(0, colon));
  if (host == "localhost") host = "127.0.0.1";
  Address address;
  if (host.starts_with('[') && host.ends_with(']')) {
    auto& to = reinterpret_cast<sockaddr_in6&>(address.storage);
    to.sin6_family = AF_INET6;
    to.sin6_port = htons(*port);
    address.length = sizeof to;
    if (inet_pton(AF_INET6, host.substr(1, host.size() - 2).c_str(), &to.sin6_addr) != 1) return {};
  } else {
    auto& to = reinterpret_cast<sockaddr_in&>(address.storage);
    to.sin_family = AF_INET;
    to.sin_port = htons(*port);
    address.length = sizeof to;
    if (inet_pton(AF_INET, host.c_str(), &to.sin_addr) != 1) return {};
  }
  return address;
}

Socket::~Socket() {
  if (descriptor_ >= 0) close(descriptor_);
}

int Socket::release() {
  return std::exchange(descriptor_, -1);
}

Address Socket::address() const {
  Address address;
  address.length = sizeof address.storage;
  getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address.storage), &address.length);
  return address;
}

Socket listen_at(const Address& address) {
  constexpr int kWaiting = 511;
  Socket socket(::socket(address.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  const int descriptor = socket.descriptor();
  if (descriptor < 0) fail("listen at", address);
  // A service that starts again takes the port of the one before.
  const int on = 1;
  setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(descriptor, reinterpret_cast<const sockaddr*>(&address.storage), address.length) != 0 ||
      listen(descriptor, kWaiting) != 0)
    fail("listen at", address);
  return socket;
}

Socket listening(int descriptor) {
  Socket socket(descriptor);
  int listens = 0, type = 0;
  socklen_t length = sizeof listens;
  if (getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &length) != 0 || listens == 0 ||
      getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &length) != 0 || type != SOCK_STREAM)
    throw ServiceError("what the service manager passed on is no socket that listens");
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
  return socket;
}

}  // namespace zymdb::service
