// Whatever a retimer service replies, and in whatever pieces: the caller gets the service's result, or -1
// when the reply's head comes torn or its end is missing. No descriptor stays open.
//
// An input's first byte is the most that arrives at once (0: everything), the rest is the reply.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "checks.h"
#include "support/system_log.h"
#include "zymdb_firmware.h"

namespace {

using zymdb::fuzz::require;

constexpr size_t kRequest = 159;
constexpr size_t kHead = 19;

// A service that has replied and hung up.
class Service {
 public:
  Service(std::string_view reply, size_t at_once) : at_once_(at_once) {
    require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) == 0, "no sockets");
    const ssize_t sent = ::send(ends_[1], reply.data(), reply.size(), MSG_DONTWAIT);
    require(sent == static_cast<ssize_t>(reply.size()), "the reply is too long");
    shutdown(ends_[1], SHUT_WR);
    running() = this;
  }
  ~Service() {
    running() = nullptr;
    close(ends_[1]);
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;

  static Service*& running() {
    static Service* service = nullptr;
    return service;
  }

  int callers_end() const { return ends_[0]; }
  size_t at_once() const { return at_once_; }

  std::string request() const {
    char bytes[2 * kRequest];
    return {bytes,
            static_cast<size_t>(std::max<ssize_t>(recv(ends_[1], bytes, sizeof bytes, MSG_DONTWAIT), 0))};
  }
  bool is_hung_up_on() const { return fcntl(ends_[0], F_GETFD) == -1; }

 private:
  int ends_[2] = {-1, -1};
  size_t at_once_;
};

int32_t expected_result(std::string_view reply, size_t at_once) {
  if (std::min(reply.size(), at_once) < kHead) return -1;
  const auto byte = [&](size_t place) { return static_cast<uint32_t>(static_cast<uint8_t>(reply[place])); };
  if (reply.size() - kHead < (byte(0) | byte(1) << 8)) return -1;
  return static_cast<int32_t>(byte(7) | byte(8) << 8 | byte(9) << 16 | byte(10) << 24);
}

}  // namespace

extern "C" {

// These take the C library's place.
__attribute__((visibility("default"))) int socket(int, int, int) noexcept {
  return Service::running()->callers_end();
}

__attribute__((visibility("default"))) int connect(int, const sockaddr*, socklen_t) {
  return 0;
}

__attribute__((visibility("default"))) ssize_t read(int descriptor, void* data, size_t size) {
  static const auto next = reinterpret_cast<ssize_t (*)(int, void*, size_t)>(dlsym(RTLD_NEXT, "read"));
  const Service* const service = Service::running();
  const bool replies = service != nullptr && descriptor == service->callers_end();
  return next(descriptor, data, replies ? std::min(size, service->at_once()) : size);
}

}  // extern "C"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  system_log().clear();
  const size_t at_once = data[0] != 0 ? data[0] : SIZE_MAX;
  const std::string_view reply(reinterpret_cast<const char*>(data) + 1, size - 1);
  const Service service(reply, at_once);
  _ZYMDB_Retimer_Update_Req request{};
  std::memset(request.Data, 'd', sizeof request.Data);
  const int32_t result = retimer_update_fw(&request);
  const int32_t expected = expected_result(reply, at_once);
  require(result == expected, "another result", std::to_string(result));
  require(service.request().size() == kRequest, "another request");
  require(service.is_hung_up_on(), "a descriptor stays open");
  require(system_log().size() <= 1, "more than a line in the log");
  return 0;
}
