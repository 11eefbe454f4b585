// What a server or the connection to it says, as statuses of the client.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_FAILURE_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_FAILURE_H

#include <cstdint>
#include <string>

namespace zymdb::client::mariadb {

// How a failure leaves the connection, and whether the same may be tried again.
enum class Aftermath : uint8_t { kUsable, kTransactionLost, kConnectionLost };

struct Failure {
  int status = 0;
  std::string reason;
  Aftermath aftermath = Aftermath::kUsable;
  unsigned code = 0;  // the server's

  explicit operator bool() const { return status != 0; }
  bool ends_transaction() const { return aftermath != Aftermath::kUsable; }
  bool ends_connection() const { return aftermath == Aftermath::kConnectionLost; }
};

// Of a number of the server's or Connector/C's.
Failure failure_of(unsigned code, const char* words);

}  // namespace zymdb::client::mariadb

#endif
