// Lets the writers of one process into a database one after the other.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_WRITER_QUEUE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_WRITER_QUEUE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zymdb::client {

class WriterQueue {
 public:
  // Waits for its turn. False when the same writer stays in for longer than `patience`; a queue that moves is
  // waited for however long it is.
  bool enter(std::chrono::milliseconds patience);
  void leave();

  // In a child process: the writer inside, if any, stayed in the parent.
  void reset_after_fork() { inside_ = false; }

 private:
  std::mutex mutex_;
  std::condition_variable left_;
  uint64_t turn_ = 0;
  bool inside_ = false;
};

// One writer's stay in the queue.
class WriterTurn {
 public:
  WriterTurn(WriterQueue& queue, std::chrono::milliseconds patience)
      : queue_(queue), inside_(queue.enter(patience)) {}
  ~WriterTurn() {
    if (inside_) queue_.leave();
  }
  WriterTurn(const WriterTurn&) = delete;
  WriterTurn& operator=(const WriterTurn&) = delete;

  explicit operator bool() const { return inside_; }

  // The stay goes on beyond this object.
  void keep() { inside_ = false; }

 private:
  WriterQueue& queue_;
  bool inside_;
};

}  // namespace zymdb::client

#endif
