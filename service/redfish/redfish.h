// The inventory by the DMTF's Redfish protocol: answers every path below /redfish.
#ifndef ZYMDB_SERVICE_REDFISH_REDFISH_H
#define ZYMDB_SERVICE_REDFISH_REDFISH_H

#include <cstddef>
#include <memory>

#include "service/accounts/accounts.h"
#include "service/http/message.h"
#include "service/inventory/current.h"
#include "service/redfish/model/features.h"

namespace zymdb::service {

struct RedfishOptions {
  // Of resources that are kept as they were written.
  size_t most_kept_bytes = size_t{2} << 20;
  // In a process that makes no databases: where settings are saved, the BIOS configuration manager may make
  // its own, which keeps what it accepted.
  bool may_create_properties = false;
  // Where the inventory cannot keep what is saved, as a snapshot cannot.
  bool is_read_only = false;
  redfish::DeliveryTimes delivery = {};
};

class Redfish : public Handler {
 public:
  // All of it outlives the handler. The streams that it hands out may outlive it: they are over then. Nothing
  // is posted any more.
  Redfish(Current& current, Accounts& accounts, const RedfishOptions& options = {});
  ~Redfish() override;

  Response answer(const Request& request) override;
  Response refuse(int status, const Request& request) override;

  // Whether the request is answered without a login: the root, what leads to it, and the login itself.
  static bool is_public(const Request& request);

 private:
  class Service;

  std::unique_ptr<Service> service_;
};

}  // namespace zymdb::service

#endif
