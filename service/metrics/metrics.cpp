#include "service/metrics/metrics.h"

#include "documents/document_prometheus.h"

namespace zymdb::service {
namespace {

std::string metric(const std::string& name, const char* type, const char* help, uint64_t value) {
  return "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n" + name + " " +
         std::to_string(value) + "\n";
}

}  // namespace

Response Metrics::answer(const Request& request) {
  if (!request.is_read()) {
    Response response = refuse(405, request);
    response.headers.emplace_back("Allow", "GET, HEAD");
    return response;
  }
  const auto gauges = gauges_();
  return Response::of(
      200, "text/plain; version=0.0.4; charset=utf-8",
      *inventory_text() + requests_.text() +
          metric("zymdb_http_connections", "gauge", "Connections that are open", gauges.connections) +
          metric("zymdb_http_sessions", "gauge", "Sessions that are not over", gauges.sessions) +
          metric("zymdb_http_failed_logins_total", "counter", "Logins with a wrong password or user",
                 gauges.failed_logins));
}

std::shared_ptr<const std::string> Metrics::inventory_text() {
  const auto document = current_.get();
  const std::lock_guard lock(mutex_);
  if (document != document_ || text_ == nullptr) {
    text_ = std::make_shared<const std::string>(documents::to_prometheus(*document, current_.types()));
    document_ = document;
  }
  return text_;
}

}  // namespace zymdb::service
