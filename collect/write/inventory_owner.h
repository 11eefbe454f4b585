// Whose inventory it is.
#ifndef ZYMDB_COLLECT_WRITE_INVENTORY_OWNER_H
#define ZYMDB_COLLECT_WRITE_INVENTORY_OWNER_H

#include <optional>

#include "collect/rows/system_rows.h"
#include "controller/database_client.h"

namespace zymdb::collect {

// An inventory is of one machine. That of another one, which has another UUID or, where one of the two has
// none, another serial number, is refused with DatabaseError; or, with `replace`, emptied: whoever wrote its
// rows wrote them about that machine.
void make_room_for(const std::optional<System>& system, bool replace, _zym_db_handle_t* handle);

}  // namespace zymdb::collect

#endif
