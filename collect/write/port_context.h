// What the inventory knows of network ports before a collection.
#ifndef ZYMDB_COLLECT_WRITE_PORT_CONTEXT_H
#define ZYMDB_COLLECT_WRITE_PORT_CONTEXT_H

#include "collect/rows/port_view.h"
#include "collect/write/former_machine.h"

namespace zymdb::collect {

// The time, the former samples of the counters, and the functions of adapters that are managed out of band,
// whose ports their manager describes. Throws DatabaseError when these cannot be read.
PortContext read_port_context(const FormerMachine& former);

}  // namespace zymdb::collect

#endif
