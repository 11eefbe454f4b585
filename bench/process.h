// A process of a benchmark; it ends with its object.
#ifndef ZYMDB_BENCH_PROCESS_H
#define ZYMDB_BENCH_PROCESS_H

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

class Process {
 public:
  explicit Process(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (posix_spawnp(&id_, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0)
      throw std::runtime_error("cannot start " + words[0]);
  }
  ~Process() {
    if (id_ == 0) return;
    kill(id_, SIGTERM);
    wait();
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // The status of waitpid; 0 when it ended well.
  int wait() {
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = 0;
    return status;
  }

 private:
  pid_t id_ = 0;
};

}  // namespace bench

#endif
