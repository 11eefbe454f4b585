// What was answered, counted.
#ifndef ZYMDB_SERVICE_METRICS_REQUESTS_H
#define ZYMDB_SERVICE_METRICS_REQUESTS_H

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "service/http/message.h"

namespace zymdb::service {

// For any thread. Handlers are told by their index.
class RequestCounters {
 public:
  explicit RequestCounters(std::vector<std::string> handlers);

  void count(size_t handler, Method method, int status, std::chrono::nanoseconds duration);

  // In the text format of Prometheus. Counters that never counted are left out.
  std::string text() const;

 private:
  static constexpr size_t kMethods = 8, kClasses = 5;
  static constexpr std::array<double, 11> kBounds = {0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025,
                                                     0.05,   0.1,   0.25,   1,     5};  // seconds
  using Counter = std::atomic<uint64_t>;

  struct OfHandler {
    std::array<std::array<Counter, kClasses>, kMethods> answers{};
    std::array<Counter, kBounds.size() + 1> durations{};
    Counter nanoseconds{};
  };

  std::string durations_text() const;

  const std::vector<std::string> names_;
  std::vector<OfHandler> handlers_;
};

}  // namespace zymdb::service

#endif
