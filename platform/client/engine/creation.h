// Whether a database that is not there may be made.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_CREATION_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_CREATION_H

namespace zymdb::client {

void allow_creation(bool allowed);
bool creation_is_allowed();

}  // namespace zymdb::client

#endif
