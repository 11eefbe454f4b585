// Statuses of the database client's own, beside those of zymdb_db.h. They reach the library's callers
// unchanged.
#ifndef ZYMDB_PLATFORM_CLIENT_STATUS_H
#define ZYMDB_PLATFORM_CLIENT_STATUS_H

#include "zymdb_db.h"

namespace zymdb::client {

enum Status : int {
  kStatusBusy = 40,       // another writer held the database for longer than a call waits
  kStatusReadOnly = 41,   // the database cannot be written
  kStatusCorrupt = 42,    // the file is damaged or is no database
  kStatusFull = 43,       // no room left on the device
  kStatusIo = 44,         // reading or writing the file failed, or it cannot be opened
  kStatusTimedOut = 45,   // the statement ran for longer than it may
  kStatusTooLarge = 46,   // a value, a filter's nesting or a result beyond the client's limits
  kStatusRefused = 47,    // the statement does what no statement of a client may
  kStatusConstraint = 48  // a value that the table's definition does not admit
};

}  // namespace zymdb::client

#endif
