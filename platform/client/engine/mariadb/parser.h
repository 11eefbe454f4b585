// Takes statements of the dialect apart, as they leave it: names in double quotes, "?" for every value. What
// it does not understand is refused, so that nothing else ever reaches the server.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PARSER_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_MARIADB_PARSER_H

#include <string>
#include <string_view>

#include "client/engine/mariadb/expression.h"

namespace zymdb::client::mariadb {

// False when it is refused; `reason` tells why.
bool parse(const Catalog& catalog, Request::Kind kind, std::string_view sql, Parsed& out,
           std::string& reason);

}  // namespace zymdb::client::mariadb

#endif
