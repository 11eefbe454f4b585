#include "files/parsing_marker.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>

#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

// Keeps the signals waiting, so that none falls between the marker and what is known of it.
class SignalsHeld {
 public:
  template <size_t N>
  explicit SignalsHeld(const int (&signals)[N]) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

std::string reason_why_not(int error) {
  const std::string marker = kParsingMarker;
  if (error == EEXIST) return "the settings are being parsed by another program (" + marker + " exists)";
  return "cannot create " + marker + ": " + std::strerror(error);
}

}  // namespace

extern "C" {

// By now the signal has its default action back, which follows when this returns.
static void remove_marker_and_end(int signal) {
  unlink(kParsingMarker);
  raise(signal);
}
}

ParsingMarker::ParsingMarker() {
  const SignalsHeld held(kSignals);
  const int marker = open(kParsingMarker, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0644);
  if (marker < 0) throw Failure(reason_why_not(errno));
  close(marker);
  handle_signals();
}

ParsingMarker::~ParsingMarker() {
  const SignalsHeld held(kSignals);
  unlink(kParsingMarker);
  for (size_t i = 0; i < std::size(kSignals); ++i) sigaction(kSignals[i], &previous_[i], nullptr);
}

void ParsingMarker::handle_signals() {
  struct sigaction action {};
  action.sa_handler = remove_marker_and_end;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (size_t i = 0; i < std::size(kSignals); ++i) {
    sigaction(kSignals[i], &action, &previous_[i]);
    // What was to be ignored stays so: a program started with nohup outlives its terminal.
    if (previous_[i].sa_handler == SIG_IGN) sigaction(kSignals[i], &previous_[i], nullptr);
  }
}

}  // namespace zymdb::tool
