#include "common/source_access.h"

#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

namespace zymdb {
namespace {

thread_local TimeBound* bound = nullptr;
thread_local AccessObserver* observer = nullptr;

std::string seconds_text(std::chrono::milliseconds time) {
  const auto count = time.count();
  return count % 1000 == 0 ? std::to_string(count / 1000) + " s" : std::to_string(count) + " ms";
}

}  // namespace

// A thread that answers one question after the other. It belongs to itself: nobody waits for its end.
class TimeBound::Worker {
 public:
  // Null where the system has no thread left.
  static std::shared_ptr<Worker> start() {
    auto worker = std::make_shared<Worker>();
    try {
      std::thread([worker] { worker->run(); }).detach();
    } catch (const std::system_error&) {
      return nullptr;
    }
    return worker;
  }

  // False: not in time.
  bool answers(std::function<void()> question, std::chrono::milliseconds longest) {
    std::unique_lock lock(mutex_);
    question_ = std::move(question);
    changed_.notify_all();
    if (!changed_.wait_for(lock, longest, [this] { return !question_; })) return false;
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return true;
  }

  void dismiss() {
    const std::lock_guard lock(mutex_);
    is_dismissed_ = true;
    changed_.notify_all();
  }

 private:
  void run() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return question_ || is_dismissed_; });
      if (!question_) return;
      const auto question = question_;
      lock.unlock();
      std::exception_ptr failure;
      try {
        question();
      } catch (...) {
        failure = std::current_exception();
      }
      lock.lock();
      failure_ = failure;
      question_ = nullptr;
      changed_.notify_all();
      if (is_dismissed_) return;
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::function<void()> question_;
  std::exception_ptr failure_;
  bool is_dismissed_ = false;
};

TimeBound::TimeBound(std::chrono::milliseconds longest) : longest_(longest), outer_(bound) {
  bound = this;
}

TimeBound::~TimeBound() {
  bound = outer_;
  if (worker_) worker_->dismiss();
}

void ask_within_bound(const std::string& what, std::function<void()> question) {
  if (bound == nullptr) return question();
  if (!bound->worker_) bound->worker_ = TimeBound::Worker::start();
  if (!bound->worker_) return question();
  if (bound->worker_->answers(std::move(question), bound->longest_)) return;
  std::exchange(bound->worker_, nullptr)->dismiss();
  throw NoAnswer(what + " does not answer within " + seconds_text(bound->longest_));
}

Observation::Observation(AccessObserver& wanted) {
  observer = &wanted;
}

Observation::~Observation() {
  observer = nullptr;
}

AccessObserver* access_observer() {
  return observer;
}

}  // namespace zymdb
