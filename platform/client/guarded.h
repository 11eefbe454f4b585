// The border of the C interface: no exception crosses it.
#ifndef ZYMDB_PLATFORM_CLIENT_GUARDED_H
#define ZYMDB_PLATFORM_CLIENT_GUARDED_H

#include <new>

#include "client/last_error.h"
#include "zymdb_db.h"

namespace zymdb::client {

template <class Body>
int guarded(Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return note_failure(ZYM_DB_STATUS_NO_MEMORY);
  } catch (...) {
    return note_failure(ZYM_DB_STATUS_ERROR);
  }
}

// As guarded, for operations that answer a pointer.
template <class Body>
auto guarded_pointer(Body body) noexcept -> decltype(body()) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    note_failure(ZYM_DB_STATUS_NO_MEMORY);
  } catch (...) {
    note_failure(ZYM_DB_STATUS_ERROR);
  }
  return nullptr;
}

}  // namespace zymdb::client

#endif
