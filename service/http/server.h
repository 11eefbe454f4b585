// HTTP/1.1, with or without TLS, on one socket.
#ifndef ZYMDB_SERVICE_HTTP_SERVER_H
#define ZYMDB_SERVICE_HTTP_SERVER_H

#include <chrono>
#include <functional>
#include <memory>

#include "service/http/address.h"
#include "service/http/certificate.h"
#include "service/http/connections.h"
#include "service/http/message.h"

namespace zymdb::service {

struct ServerOptions {
  unsigned threads = 2;
  Limits limits = {};
  Certificate* certificate = nullptr;  // null: no TLS
  // Whether the answer may take long: it is made where no other request waits for it.
  std::function<bool(const Request&)> is_slow = {};
  // Told of each answer, also of those that the server gives itself.
  std::function<void(const Request&, int status, std::chrono::nanoseconds)> observe = {};
};

class Server {
 public:
  // Listens from now on, until the destructor. Requests that are no good are refused in the handler's words,
  // and the others answered by it. Throws ServiceError.
  Server(Handler& handler, Socket socket, const ServerOptions& options);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  unsigned connections() const;

  // False where an answer takes longer than any should: a thread hangs.
  bool is_alive() const;

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation_;
};

}  // namespace zymdb::service

#endif
