#include "client/engine/writer_queue.h"

namespace zymdb::client {

bool WriterQueue::enter(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  while (inside_) {
    const uint64_t turn = turn_;
    const bool moved = left_.wait_for(lock, patience, [&] { return !inside_ || turn_ != turn; });
    if (!moved) return false;
  }
  inside_ = true;
  ++turn_;
  return true;
}

void WriterQueue::leave() {
  {
    const std::lock_guard lock(mutex_);
    inside_ = false;
  }
  left_.notify_one();
}

}  // namespace zymdb::client
