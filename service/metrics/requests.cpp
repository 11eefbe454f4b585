#include "service/metrics/requests.h"

#include <algorithm>
#include <cstdio>

namespace zymdb::service {
namespace {

constexpr const char* kMethodNames[] = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "OPTIONS", "other"};

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", value);
  return text;
}

std::string header(const std::string& name, const char* type, const char* help) {
  return "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n";
}

}  // namespace

RequestCounters::RequestCounters(std::vector<std::string> handlers)
    : names_(std::move(handlers)), handlers_(names_.size()) {}

void RequestCounters::count(size_t handler, Method method, int status, std::chrono::nanoseconds duration) {
  OfHandler& of = handlers_[handler];
  const auto status_class = static_cast<size_t>(std::clamp(status / 100, 1, 5) - 1);
  of.answers[static_cast<size_t>(method)][status_class].fetch_add(1, std::memory_order_relaxed);
  const double seconds = std::chrono::duration<double>(duration).count();
  const auto bucket = static_cast<size_t>(std::ranges::lower_bound(kBounds, seconds) - kBounds.begin());
  of.durations[bucket].fetch_add(1, std::memory_order_relaxed);
  of.nanoseconds.fetch_add(static_cast<uint64_t>(duration.count()), std::memory_order_relaxed);
}

std::string RequestCounters::text() const {
  const std::string name = "zymdb_http_requests_total";
  std::string text = header(name, "counter", "Requests that were answered");
  for (size_t handler = 0; handler < names_.size(); ++handler) {
    for (size_t method = 0; method < kMethods; ++method) {
      for (size_t of_class = 0; of_class < kClasses; ++of_class) {
        const uint64_t count = handlers_[handler].answers[method][of_class];
        if (count == 0) continue;
        text += name + "{handler=\"" + names_[handler] + "\",method=\"" + kMethodNames[method] +
                "\",code=\"" + std::to_string(of_class + 1) + "xx\"} " + std::to_string(count) + "\n";
      }
    }
  }
  return text + durations_text();
}

std::string RequestCounters::durations_text() const {
  const std::string name = "zymdb_http_request_duration_seconds";
  std::string text = header(name, "histogram", "Time from the head of a request to its answer");
  for (size_t handler = 0; handler < names_.size(); ++handler) {
    const OfHandler& of = handlers_[handler];
    const std::string label = "handler=\"" + names_[handler] + "\"";
    uint64_t count = 0;
    for (size_t bucket = 0; bucket <= kBounds.size(); ++bucket) {
      count += of.durations[bucket];
      const std::string bound = bucket < kBounds.size() ? number(kBounds[bucket]) : "+Inf";
      text += name + "_bucket{" + label + ",le=\"" + bound + "\"} " + std::to_string(count) + "\n";
    }
    text += name + "_sum{" + label + "} " + number(static_cast<double>(of.nanoseconds) / 1e9) + "\n";
    text += name + "_count{" + label + "} " + std::to_string(count) + "\n";
  }
  return text;
}

}  // namespace zymdb::service
