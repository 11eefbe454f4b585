#include "service/http/workers.h"

#include <utility>

namespace zymdb::service {

Workers::~Workers() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

bool Workers::run(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  if (ends_ || waiting_.size() >= most_waiting_) return false;
  waiting_.push_back(std::move(work));
  if (idle_ < waiting_.size() && threads_.size() < most_threads_)
    threads_.emplace_back([this] { work_off(); });
  changed_.notify_one();
  return true;
}

void Workers::work_off() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    changed_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
    --idle_;
    if (waiting_.empty()) return;
    const auto work = std::move(waiting_.front());
    waiting_.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace zymdb::service
