// Writes the rows of another engine's database into a file.
#ifndef ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_IMPORTED_COPY_H
#define ZYMDB_PLATFORM_CLIENT_ENGINE_SQLITE_IMPORTED_COPY_H

#include <string>

#include "client/engine/module.h"

namespace zymdb::client::sqlite {

// As ModuleHost::write_copy. A failure leaves no file.
int write_copy(const std::string& path, const Schema& schema, CopySource& source, std::string& error);

}  // namespace zymdb::client::sqlite

#endif
