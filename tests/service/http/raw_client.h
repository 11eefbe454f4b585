// A client that sends whatever a test wants it to.
#ifndef ZYMDB_TESTS_SERVICE_HTTP_RAW_CLIENT_H
#define ZYMDB_TESTS_SERVICE_HTTP_RAW_CLIENT_H

#include <chrono>
#include <string>

#include "service/http/address.h"

namespace zymdb::service::test {

struct Reply {
  int status = 0;  // 0: nothing came
  std::string head;
  std::string body;

  // Of a header; empty where it is not there.
  std::string header(const std::string& name) const;
};

class RawClient {
 public:
  explicit RawClient(const Address& server, std::chrono::milliseconds patience = std::chrono::seconds(20));
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // False where the other side takes no more.
  bool send(const std::string& text) const;
  // One answer. `has_body` is false for what a HEAD gets.
  Reply receive(bool has_body = true);
  Reply ask(const std::string& method, const std::string& target, const std::string& headers = "",
            const std::string& body = "");
  // Whatever comes until the other side closes; without it closing within the patience the test fails.
  std::string receive_to_end();
  // At least so much, without waiting for more.
  std::string receive_at_least(size_t size);
  bool is_closed();

 private:
  bool read_more();

  int descriptor_;
  std::string received_;
};

}  // namespace zymdb::service::test

#endif
