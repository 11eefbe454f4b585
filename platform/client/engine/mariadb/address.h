// An address: //USER@HOST[:PORT][,HOST[:PORT]…]/DATABASE[?CHOICE[&CHOICE]…], as it stands behind "mariadb:".
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_ADDRESS_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_ADDRESS_H

#include <string>
#include <string_view>
#include <vector>

namespace zymdb::client::mariadb {

struct Host {
  std::string name;  // empty for the socket
  unsigned port = 3306;
};

// Whether the connection is encrypted, and the server has to prove who it is.
enum class Tls { kVerify, kRequired, kOff };

struct Address {
  std::string user;
  std::vector<Host> hosts;
  std::string database;
  std::string socket;         // empty: over the network
  std::string password_file;  // empty: MariaDB's own option files
  std::string authority;      // the file of the authorities' certificates; empty for the system's
  Tls tls = Tls::kVerify;
};

// False when it is none; `error` then tells what it lacks.
bool parse_address(std::string_view text, Address& address, std::string& error);

// "HOST:PORT", or the socket.
std::string describe(const Address& address, const Host& host);

}  // namespace zymdb::client::mariadb

#endif
