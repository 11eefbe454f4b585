// Runs a body in a child process.
#ifndef ZYMDB_TESTS_PLATFORM_CHILD_PROCESS_H
#define ZYMDB_TESTS_PLATFORM_CHILD_PROCESS_H

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

class ChildProcess {
 public:
  // The body's answer is the process's exit code; it ends without the parent's exit handlers.
  template <class Body>
  explicit ChildProcess(Body body) : pid_(fork()) {
    if (pid_ < 0) throw std::runtime_error("no child process");
    if (pid_ == 0) _exit(body());
  }
  ~ChildProcess() {
    if (pid_ > 0) {
      kill(SIGKILL);
      wait();
    }
  }
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void kill(int signal) const { ::kill(pid_, signal); }

  // The exit code; -1 when a signal ended it.
  int wait() {
    int status = 0;
    const pid_t pid = std::exchange(pid_, 0);
    if (waitpid(pid, &status, 0) != pid) return -2;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t pid_;
};

#endif
