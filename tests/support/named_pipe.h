// A named pipe that nobody writes, in place of a file: what opens it carelessly waits for good.
#ifndef ZYMDB_TESTS_SUPPORT_NAMED_PIPE_H
#define ZYMDB_TESTS_SUPPORT_NAMED_PIPE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>
#include <string>
#include <utility>

class NamedPipe {
 public:
  explicit NamedPipe(std::string path) : path_(std::move(path)) { EXPECT_EQ(mkfifo(path_.c_str(), 0600), 0); }
  ~NamedPipe() { unlink(path_.c_str()); }
  NamedPipe(const NamedPipe&) = delete;
  NamedPipe& operator=(const NamedPipe&) = delete;

  // What `read` answers; a failure when it waits for somebody to write. That is then done, so that it ends.
  template <class Read>
  auto answer_of(Read read) const {
    auto answer = std::async(std::launch::async, read);
    const bool is_waiting = answer.wait_for(std::chrono::seconds(5)) == std::future_status::timeout;
    EXPECT_FALSE(is_waiting) << path_ << " is waited for";
    if (is_waiting) close(open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    return answer.get();
  }

 private:
  std::string path_;
};

#endif
