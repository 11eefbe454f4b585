// The page on the service's own server, with a login that the tests know:
//
//   page_server
//
// answers on a free port of this machine, whose address it prints, until its input ends. Who logged in as
// "reader" with the password "correct horse" may read, until a line "refuse" comes in.
#include <atomic>
#include <iostream>
#include <string>

#include "common/client_extensions.h"
#include "records/pci.h"
#include "service/http/address.h"
#include "service/http/server.h"
#include "service/page/page.h"

namespace zymdb::service {
namespace {

constexpr char kSessions[] = "/redfish/v1/SessionService/Sessions";
constexpr char kToken[] = "0123456789abcdef";
constexpr char kCredentials[] = R"({"UserName":"reader","Password":"correct horse"})";

class GuardedPage : public Handler {
 public:
  explicit GuardedPage(Current& current) : page_(current) {}

  Response answer(const Request& request) override {
    if (request.path == kSessions) return log_in(request);
    Request known = request;
    if (is_open_ && request.header("X-Auth-Token") == kToken) known.caller = {"reader", Role::kReadOnly, "1"};
    return page_.answer(known);
  }

  void refuse_everybody() { is_open_ = false; }

 private:
  static Response log_in(const Request& request) {
    if (request.method != Method::kPost || request.body != kCredentials)
      return Response::of(401, "application/json", "{}");
    Response response = Response::of(201, "application/json", "{}");
    response.headers.emplace_back("X-Auth-Token", kToken);
    return response;
  }

  Page page_;
  std::atomic<bool> is_open_ = true;
};

int run() {
  allow_creation(false);
  Current current(records::kPciIdsFile);
  GuardedPage page(current);
  Socket socket = listen_at(*parse_address("127.0.0.1:0"));
  const std::string address = "http://" + socket.address().text() + "/";
  const Server server(page, std::move(socket), {});
  std::cout << address << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "refuse") page.refuse_everybody();
  }
  return 0;
}

}  // namespace
}  // namespace zymdb::service

int main() {
  return zymdb::service::run();
}
