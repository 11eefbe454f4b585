#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>

#include "db/system_log.h"
#include "zymdb_firmware.h"

using namespace zymdb;

namespace {

constexpr char kSocketPath[] = "/tmp/rtcfgproxy.sock";
constexpr char kProgressPath[] = "/tmp/.rt_upd_state";
constexpr time_t kLongestWait = 3600;  // seconds
constexpr std::chrono::seconds kTransferTime{5};
constexpr size_t kBodyChunk = 512;

constexpr int32_t kBadReply = -1;
constexpr int32_t kNoSocket = -2;
constexpr int32_t kNotConnected = -3;
constexpr int32_t kNotWritten = -4;
constexpr int32_t kWaitFailed = -5;
constexpr int32_t kTimedOut = -6;

struct [[gnu::packed]] Request {
  uint16_t length = 140;
  uint8_t reserved[17] = {};
  uint8_t data[128];
  uint32_t param1;
  uint32_t param2;
  uint8_t byte1;
  uint8_t byte2;
  uint8_t byte3;
  uint8_t end = 0;
};
static_assert(sizeof(Request) == 159 && offsetof(Request, data) == 19 && offsetof(Request, byte3) == 157);

struct [[gnu::packed]] Reply {
  uint16_t body_length;
  uint8_t reserved[5];
  int32_t result;
  uint8_t reserved2[8];
};
static_assert(sizeof(Reply) == 19 && offsetof(Reply, result) == 7);

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int get() const { return descriptor_; }

 private:
  const int descriptor_;
};

// How long one read or write may still take, however often signals interrupt it.
class TimeLeft {
 public:
  std::chrono::microseconds get() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(end_ - std::chrono::steady_clock::now());
  }
  explicit operator bool() const { return get().count() > 0; }

 private:
  const std::chrono::steady_clock::time_point end_ = std::chrono::steady_clock::now() + kTransferTime;
};

// One read or write, restarted when a signal interrupted it and there is time left.
template <class Transfer>
ssize_t transfer(Transfer once) {
  const TimeLeft left;
  ssize_t count = once();
  while (count < 0 && errno == EINTR && left) count = once();
  return count;
}

void set_receive_timeout(int descriptor, std::chrono::microseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  const timeval timeout{static_cast<time_t>(seconds.count()),
                        static_cast<suseconds_t>((time - seconds).count())};
  setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
}

// One read from the service. A socket's timeout begins anew with each system call: what follows a signal gets
// the rest of it alone.
ssize_t receive(int descriptor, void* data, size_t size) {
  const TimeLeft left;
  ssize_t count = read(descriptor, data, size);
  const bool is_interrupted = count < 0 && errno == EINTR;
  while (count < 0 && errno == EINTR && left) {
    set_receive_timeout(descriptor, std::max(left.get(), std::chrono::microseconds{1}));
    count = read(descriptor, data, size);
  }
  if (is_interrupted && count > 0) set_receive_timeout(descriptor, kTransferTime);
  return count;
}

Request request_of(const _ZYMDB_Retimer_Update_Req& req) {
  Request request;
  std::memcpy(request.data, req.Data, sizeof request.data);
  request.param1 = req.Param1;
  request.param2 = req.Param2;
  request.byte1 = req.Byte1;
  request.byte2 = req.Byte2;
  request.byte3 = req.Byte3;
  return request;
}

bool connect_to_service(int descriptor) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, kSocketPath, sizeof address.sun_path - 1);
  const int result = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  if (result == 0) return true;
  const int error = errno;
  log_to_system(kLogInformation, "%s, connect error, rc=%d(%s)\n\n", "retimer_hal_proxy", result,
                strerror(error));
  return false;
}

// 0 once there is something to read.
int32_t wait_for_reply(int descriptor) {
  timeval left{kLongestWait, 0};
  int ready;
  do {
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(descriptor, &readable);
    ready = select(descriptor + 1, &readable, nullptr, nullptr, &left);
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) return kWaitFailed;
  return ready == 0 ? kTimedOut : 0;
}

// The body is consumed and not interpreted.
bool read_body(int descriptor, size_t length) {
  uint8_t chunk[kBodyChunk];
  while (length > 0) {
    const ssize_t count = receive(descriptor, chunk, std::min(length, sizeof chunk));
    if (count <= 0) return false;
    length -= static_cast<size_t>(count);
  }
  return true;
}

// 0 with the service's result in `result`, or the local error.
int32_t exchange(const Request& request, int32_t& result) {
  const Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (connection.get() < 0) return kNoSocket;
  if (!connect_to_service(connection.get())) return kNotConnected;
  // An answer that cannot be waited for, beyond what a set of descriptors holds, is not asked for.
  if (connection.get() >= FD_SETSIZE) return kWaitFailed;

  const ssize_t written = transfer([&] { return write(connection.get(), &request, sizeof request); });
  if (written != static_cast<ssize_t>(sizeof request)) {
    log_to_system(kLogInformation, "%s, write error\n\n", "retimer_hal_proxy");
    return kNotWritten;
  }
  if (const int32_t failure = wait_for_reply(connection.get()); failure != 0) return failure;

  set_receive_timeout(connection.get(), kTransferTime);
  Reply reply;
  const ssize_t count = receive(connection.get(), &reply, sizeof reply);
  if (count != static_cast<ssize_t>(sizeof reply) || !read_body(connection.get(), reply.body_length))
    return kBadReply;
  result = reply.result;
  return 0;
}

// Reads one byte of the progress file; `what` names it in the log.
bool read_byte(int descriptor, const char* what, uint8_t& byte) {
  if (transfer([&] { return read(descriptor, &byte, 1); }) == 1) return true;
  log_to_system(kLogInformation, "%s, read %s from retimer update progress file failed\n\n",
                "retimer_get_fw_update_progress", what);
  return false;
}

}  // namespace

int32_t retimer_update_fw(const _ZYMDB_Retimer_Update_Req* req) {
  if (req == nullptr) return kBadReply;

  // A service that hangs up while it is written to is a failed write, not the end of the process.
  signal(SIGPIPE, SIG_IGN);
  int32_t result = 0;
  const int32_t failure = exchange(request_of(*req), result);
  if (failure == 0) return result;
  log_to_system(kLogInformation, "%s, retimer_hal_proxy fails, rc = 0x%x\n\n", "retimer_update_fw",
                static_cast<unsigned>(failure));
  return failure;
}

int32_t retimer_get_fw_update_progress(uint32_t slotNo, _ZYMDB_Retimer_Progress* out) {
  if (out == nullptr) return -1;
  // A pipe in its place is not waited for: it reads as a file that ends too early.
  const Descriptor file(open(kProgressPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.get() < 0) {
    // The line has always spoken of another device; log readers look for it.
    log_to_system(kLogInformation, "%s, open raid update progress file failed\n\n",
                  "retimer_get_fw_update_progress");
    return -1;
  }

  uint8_t slot = 0;
  uint8_t stage = 0;
  uint8_t progress = 0;
  if (!read_byte(file.get(), "slot", slot) || !read_byte(file.get(), "stage", stage) ||
      !read_byte(file.get(), "progress", progress) || slot != slotNo)
    return -1;
  out->Stage = stage;
  out->Progress = progress;
  return 0;
}
