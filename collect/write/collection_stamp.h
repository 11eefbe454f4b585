// What the inventory keeps of the collection itself.
#ifndef ZYMDB_COLLECT_WRITE_COLLECTION_STAMP_H
#define ZYMDB_COLLECT_WRITE_COLLECTION_STAMP_H

#include <string>

#include "controller/database_client.h"

namespace zymdb::collect {

// Writes into the machine's row that a collection of these sources has changed something now. Without a row
// it makes one. Throws DatabaseError.
void stamp_collection(_zym_db_handle_t* handle, const std::string& sources);

}  // namespace zymdb::collect

#endif
