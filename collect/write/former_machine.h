// What the inventory knows of a machine before a collection.
#ifndef ZYMDB_COLLECT_WRITE_FORMER_MACHINE_H
#define ZYMDB_COLLECT_WRITE_FORMER_MACHINE_H

#include <set>

#include "collect/model/machine.h"
#include "controller/database_client.h"

namespace zymdb::collect {

struct FormerMachine {
  _zym_db_handle_t* handle;

  // Functions of the machine at whose address the inventory has another device: by vendor and device, or by
  // subsystem where both are known.
  std::set<FunctionKey> replaced;
};

// Throws DatabaseError.
FormerMachine read_former_machine(_zym_db_handle_t* handle, const Machine& machine);

}  // namespace zymdb::collect

#endif
