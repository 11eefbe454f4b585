// Requests that post JSON to wherever somebody wants events: many at a time, by one thread.
#ifndef ZYMDB_SERVICE_REDFISH_TRANSFERS_H
#define ZYMDB_SERVICE_REDFISH_TRANSFERS_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "service/http/message.h"
#include "service/redfish/model/features.h"

namespace zymdb::service::redfish {

// Whether something can be posted there: http or https, with a host, without a user.
bool is_destination(const std::string& url);

struct Post {
  std::string id;  // of whom it is for
  std::string url;
  Fields headers = {};
  std::string body = {};
};

struct Outcome {
  std::string id;
  bool is_delivered = false;
};

// All of one thread, but for `wake`.
class Transfers {
 public:
  // Throws std::bad_alloc.
  explicit Transfers(const DeliveryTimes& times);
  // What is on its way is given up.
  ~Transfers();
  Transfers(const Transfers&) = delete;
  Transfers& operator=(const Transfers&) = delete;

  // One for each id.
  void start(Post post);
  bool has(const std::string& id) const;
  void give_up(const std::string& id);

  // Goes on with all of them; those that have ended since.
  std::vector<Outcome> go_on();
  // Until something can go on, somebody wakes it, or for so long.
  void wait(std::chrono::milliseconds longest);
  // From any thread.
  void wake();

 private:
  class Transfer;
  struct Multi;

  const DeliveryTimes times_;
  std::unique_ptr<Multi> multi_;
  std::vector<std::unique_ptr<Transfer>> transfers_;
};

}  // namespace zymdb::service::redfish

#endif
