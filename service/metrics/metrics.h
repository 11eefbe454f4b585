// /metrics: the inventory and the service itself, in the text format of Prometheus.
#ifndef ZYMDB_SERVICE_METRICS_METRICS_H
#define ZYMDB_SERVICE_METRICS_METRICS_H

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

#include "service/http/message.h"
#include "service/inventory/current.h"
#include "service/metrics/requests.h"

namespace zymdb::service {

// How many there are at this moment, or have been.
struct ServiceGauges {
  uint64_t connections = 0;
  uint64_t sessions = 0;
  uint64_t failed_logins = 0;
};

class Metrics : public Handler {
 public:
  Metrics(Current& current, const RequestCounters& requests, std::function<ServiceGauges()> gauges)
      : current_(current), requests_(requests), gauges_(std::move(gauges)) {}

  Response answer(const Request& request) override;

 private:
  std::shared_ptr<const std::string> inventory_text();

  Current& current_;
  const RequestCounters& requests_;
  const std::function<ServiceGauges()> gauges_;
  std::mutex mutex_;
  Current::DocumentPtr document_;
  std::shared_ptr<const std::string> text_;  // of that document
};

}  // namespace zymdb::service

#endif
