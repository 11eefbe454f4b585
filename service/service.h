// The service as a whole: which handler answers what, who may ask it, and what all answers have in common.
#ifndef ZYMDB_SERVICE_SERVICE_H
#define ZYMDB_SERVICE_SERVICE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "service/accounts/system_accounts.h"
#include "service/http/log.h"
#include "service/http/message.h"
#include "service/http/server.h"
#include "service/inventory/current.h"
#include "service/metrics/metrics.h"

namespace zymdb::service {

struct ServiceOptions {
  // GET and HEAD without a login. Only for addresses that nobody else reaches; then only under their own
  // names.
  bool anonymous_reads = false;
  // The inventory keeps nothing that is saved, as a snapshot does.
  bool is_read_only = false;
};

class Service : public Handler {
 public:
  Service(Current& current, SystemAccounts& accounts, const ServiceOptions& options, Log log);

  Response answer(const Request& request) override;
  Response refuse(int status, const Request& request) override;

  // For the server. Told of its connections once it runs.
  bool is_slow(const Request& request) const;
  void observe(const Request& request, int status, std::chrono::nanoseconds duration);
  void watch_connections(std::function<unsigned()> count) { connections_ = std::move(count); }

 private:
  using Test = bool (*)(const Request&);
  struct Route {
    std::string_view prefix;  // of whole steps: "/redfish" is of "/redfish" and "/redfish/v1"
    const char* name;         // in the metrics
    std::unique_ptr<Handler> handler;
    Test is_public;  // whether everybody may; null: nobody without a login
    Test is_slow;    // whether the answer may take long; null: none does
  };

  std::vector<Route> make_routes();
  const Route* find(std::string_view path) const;
  Response answer_as(Request request, const Identity& identity, const Route* route);
  Response unauthorized(const Request& request);
  ServiceGauges gauges() const;

  Current& current_;
  SystemAccounts& accounts_;
  const ServiceOptions options_;
  const Log log_;
  std::function<unsigned()> connections_;
  // The last one counts what no handler is asked for.
  RequestCounters requests_;
  const std::vector<Route> routes_;
};

}  // namespace zymdb::service

#endif
