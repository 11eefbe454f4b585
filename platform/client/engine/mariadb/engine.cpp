#include "client/engine/mariadb/engine.h"

#include <mysql.h>

#include "client/engine/mariadb/session.h"

namespace zymdb::client::mariadb {
namespace {

ModuleHost the_host{};

// What an address says behind its "?" is a part of it here: it is put back.
bool locate(std::string_view address, const Schema&, DataSource& source, std::string& error) {
  Address parsed;
  source.address = address;
  return parse_address(address, parsed, error);
}

bool choose(std::string_view choices, DataSource& source, std::string& error) {
  if (choices.empty()) return true;
  source.address.append("?").append(choices);
  Address parsed;
  return parse_address(source.address, parsed, error);
}

std::unique_ptr<Session> make_session(const DataSource& source, WriterQueue& writers, const Limits& limits) {
  return std::make_unique<MariadbSession>(source, writers, limits);
}

constinit const Engine kEngine = {"mariadb",
                                  locate,
                                  choose,
                                  make_session,
                                  kStandardSql,
                                  MariadbSession::stand_still,
                                  MariadbSession::go_on,
                                  MariadbSession::abandon_inherited};

const Engine* start(const ModuleHost& host) {
  the_host = host;
  return mysql_library_init(0, nullptr, nullptr) == 0 ? &kEngine : nullptr;
}

}  // namespace

const ModuleHost& host() {
  return the_host;
}

}  // namespace zymdb::client::mariadb

extern "C" __attribute__((visibility("default"))) const zymdb::client::EngineModule zymdb_engine_module = {
    zymdb::client::kModuleInterface, ZYMDB_VERSION, &zymdb::client::mariadb::start};
