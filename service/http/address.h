// Where the service listens.
#ifndef ZYMDB_SERVICE_HTTP_ADDRESS_H
#define ZYMDB_SERVICE_HTTP_ADDRESS_H

#include <sys/socket.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zymdb::service {

// The service cannot run as it was told to. Its text is one line.
class ServiceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Address {
  sockaddr_storage storage{};
  socklen_t length = 0;

  // Whether only this machine reaches it. A socket of the file system is within it too.
  bool is_loopback() const;
  // "127.0.0.1:8000", "[::1]:8000".
  std::string text() const;
  // "127.0.0.1": whom a connection comes from. One of the file system has no address: "local".
  std::string host() const;
};

// "127.0.0.1:8000", "[::1]:8000", "localhost:8000"; port 0 is one that the system chooses. Nothing else.
std::optional<Address> parse_address(std::string_view text);

class Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  Socket(Socket&& other) noexcept : descriptor_(other.release()) {}
  ~Socket();
  Socket& operator=(Socket&&) = delete;

  int descriptor() const { return descriptor_; }
  int release();

  // Where it listens.
  Address address() const;

 private:
  int descriptor_;
};

// A socket that listens there. Throws ServiceError.
Socket listen_at(const Address& address);

// One that somebody else made, a service manager for one. Throws ServiceError for what is none.
Socket listening(int descriptor);

}  // namespace zymdb::service

#endif
