// Threads for what may take long, so that nobody else waits for it: logins.
#ifndef ZYMDB_SERVICE_HTTP_WORKERS_H
#define ZYMDB_SERVICE_HTTP_WORKERS_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace zymdb::service {

class Workers {
 public:
  // Threads are started as work comes.
  Workers(size_t threads, size_t most_waiting) : most_threads_(threads), most_waiting_(most_waiting) {}
  // Waits for all that was taken on.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  // Whether the work was taken on.
  bool run(std::function<void()> work);

 private:
  void work_off();

  const size_t most_threads_;
  const size_t most_waiting_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> waiting_;
  std::vector<std::thread> threads_;
  size_t idle_ = 0;
  bool ends_ = false;
};

}  // namespace zymdb::service

#endif
