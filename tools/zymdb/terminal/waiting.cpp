#include "terminal/waiting.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace zymdb::tool {
namespace {

constexpr int kTaken[] = {SIGINT, SIGTERM, SIGWINCH, SIGCONT};
constexpr uint32_t kTold =
    IN_MODIFY | IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE_SELF | IN_MOVE_SELF;

sigset_t taken() {
  sigset_t set{};
  sigemptyset(&set);
  for (const int signal : kTaken) sigaddset(&set, signal);
  return set;
}

std::filesystem::path resolved(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::canonical(path, error);
  return error ? std::filesystem::absolute(path) : whole;
}

// How long to wait before the next look, in ms: after a change a little at first, and longer and longer until
// it is too long ago.
class Pauses {
 public:
  static constexpr int kForEver = -1;

  explicit Pauses(int usual) : usual_(usual) {}

  void begin() {
    pause_ = 1;
    since_ = 0;
  }

  int next() {
    constexpr int kLongest = 256, kLimit = 8000;
    if (pause_ == 0) return usual_;
    const int pause = pause_;
    since_ += pause;
    pause_ = since_ >= kLimit ? 0 : std::min(pause_ * 2, kLongest);
    return pause;
  }

 private:
  int usual_;
  int pause_ = 0;  // 0: the usual one
  int since_ = 0;
};

}  // namespace

Signals::Signals() {
  const sigset_t set = taken();
  sigprocmask(SIG_BLOCK, &set, &before_);
  descriptor_ = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
}

Signals::~Signals() {
  if (descriptor_ >= 0) close(descriptor_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int Signals::take() const {
  signalfd_siginfo taken{};
  return read(descriptor_, &taken, sizeof taken) == sizeof taken ? static_cast<int>(taken.ssi_signo) : 0;
}

bool is_end(int signal) {
  return signal == SIGINT || signal == SIGTERM;
}

FileChanges::FileChanges(const std::string& path) {
  const auto whole = resolved(path);
  name_ = whole.filename();
  descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (descriptor_ < 0 || inotify_add_watch(descriptor_, whole.parent_path().c_str(), kTold) >= 0) return;
  close(descriptor_);
  descriptor_ = -1;
}

FileChanges::~FileChanges() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool FileChanges::take() const {
  bool is_about_it = false;
  alignas(inotify_event) std::array<char, 4096> block;
  for (ssize_t count = 0; (count = read(descriptor_, block.data(), block.size())) > 0;) {
    for (size_t at = 0; at < static_cast<size_t>(count);) {
      inotify_event event{};
      std::memcpy(&event, block.data() + at, sizeof event);
      const std::string_view name = event.len != 0 ? std::string_view(block.data() + at + sizeof event) : "";
      // Without a name it is about the folder, or more has happened than the system kept.
      is_about_it = is_about_it || name.empty() || name.starts_with(name_);
      at += sizeof event + event.len;
    }
  }
  return is_about_it;
}

int wait_for_change(const Signals& signals, const FileChanges& changes, unsigned seconds,
                    const std::function<bool()>& has_happened) {
  Pauses pauses(changes.is_told() ? Pauses::kForEver : static_cast<int>(seconds * 1000));
  while (true) {
    std::array<pollfd, 2> ready{{{signals.descriptor(), POLLIN, 0}, {changes.descriptor(), POLLIN, 0}}};
    const bool is_over = poll(ready.data(), ready.size(), pauses.next()) == 0;
    if (const int signal = signals.take()) return signal;
    const bool has_changed = changes.is_told() && changes.take();
    if (has_changed) pauses.begin();
    if ((is_over || has_changed) && has_happened()) return 0;
  }
}

}  // namespace zymdb::tool
