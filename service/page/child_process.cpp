#include "service/page/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>

#include "common/client_objects.h"

namespace zymdb::service {
namespace {

constexpr int kDone = 0, kFailed = 1;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

bool write_all(int to, const std::string& content) {
  for (size_t done = 0; done < content.size();) {
    const ssize_t written = write(to, content.data() + done, content.size() - done);
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) done += static_cast<size_t>(written);
  }
  return true;
}

[[noreturn]] void work_in_child(const std::function<std::string()>& work, int to, pid_t parent) {
  // Who is asked to end is the parent, and the child with it.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(kFailed);
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, SIG_DFL);
  int status = kFailed;
  std::string output;
  try {
    output = work();
    status = kDone;
  } catch (const std::exception& error) {
    output = error.what();
  } catch (...) {
    output = "failed";
  }
  // Nothing of the parent's is ended or flushed here.
  _exit(write_all(to, output) ? status : kFailed);
}

// False when the time was over first.
bool read_all(int from, std::chrono::steady_clock::time_point end, std::string& content) {
  std::array<char, 65536> piece;
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd waiting{.fd = from, .events = POLLIN, .revents = 0};
    const int ready = poll(&waiting, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno != EINTR) return false;
    if (ready <= 0) continue;
    const ssize_t size = read(from, piece.data(), piece.size());
    if (size == 0) return true;
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) content.append(piece.data(), static_cast<size_t>(size));
  }
}

}  // namespace

std::string output_of_child(const std::function<std::string()>& work, std::chrono::milliseconds limit) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0)
    throw DatabaseError(std::string("no pipe: ") + std::strerror(errno));
  const Descriptor output(ends[0]);
  Descriptor input(ends[1]);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw DatabaseError(std::string("no process: ") + std::strerror(errno));
  if (child == 0) work_in_child(work, input.number(), parent);
  input.close();

  std::string content;
  const bool is_whole = read_all(output.number(), std::chrono::steady_clock::now() + limit, content);
  if (!is_whole) kill(child, SIGKILL);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!is_whole) throw DatabaseError("reading the history took too long");
  if (!WIFEXITED(status)) throw DatabaseError("reading the history ended early");
  if (WEXITSTATUS(status) != kDone)
    throw DatabaseError(content.empty() ? "the history cannot be read" : content);
  return content;
}

}  // namespace zymdb::service
