// The open handles of the process and each thread's sessions with them.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_REGISTRY_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_REGISTRY_H

#include <memory>
#include <mutex>

#include "client/session/database.h"
#include "zymdb_db.h"

namespace zymdb::client {

// A new handle once this thread's session with the database is open; null, with one line in the log, when it
// cannot be opened.
_zym_db_handle_t* open_handle(const DataSource& source);

// The inventory's handle, opened on first use and again after it was closed; null as open_handle.
_zym_db_handle_t* shared_handle();

// False for what is no open handle.
bool close_handle(_zym_db_handle_t* handle);

// The calling thread's session, locked for one operation.
class Lease {
 public:
  // Returns 0; ZYM_DB_STATUS_NO_DB for a handle that is not open; else why the database cannot be opened,
  // with a line in the log.
  int acquire(_zym_db_handle_t* handle);

  // Operations on the leased session. A failure leaves a line in the log.
  int query(const Request& request, Result& result);
  int change(const Request& request, Change& change);
  int begin();
  int commit() { return logged(held_->session->commit(), "commit"); }
  int rollback() { return logged(held_->session->rollback(), "rollback"); }

  Lease() = default;
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;

 private:
  int compose(const Request& request);
  int reopen();
  int logged(int status, const char* operation) const;
  int logged(int status) const;

  std::shared_ptr<ThreadSession> held_;
  std::unique_lock<std::mutex> lock_;  // of what is held
};

}  // namespace zymdb::client

#endif
