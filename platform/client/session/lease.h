// The calling thread's session for the time of one operation: composes statements, opens what is to be opened
// anew, tries again where that helps, and tells of failures.
#ifndef ZYMDB_PLATFORM_CLIENT_SESSION_LEASE_H
#define ZYMDB_PLATFORM_CLIENT_SESSION_LEASE_H

#include <memory>
#include <mutex>

#include "client/session/database.h"
#include "zymdb_db.h"

namespace zymdb::client {

class Lease {
 public:
  // Returns 0; ZYM_DB_STATUS_NO_DB for a handle that is not open; else why the database cannot be opened,
  // with a line in the log.
  int acquire(_zym_db_handle_t* handle);

  // Operations on the leased session. A failure leaves a line in the log.
  int query(const Request& request, Result& result);
  int change(const Request& request, Change& change);
  int begin();
  int commit() { return logged(session().commit(), "commit"); }
  int rollback() { return logged(session().rollback(), "rollback"); }
  int generation(uint64_t& generation);
  int save_copy(const char* path, uint64_t& generation);
  int rewind(uint64_t generation);

  Lease() = default;
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;

 private:
  Session& session() { return *held_->session; }
  Statement& statement() { return held_->statement; }
  int compose(const Request& request);
  int recompose(const Request& request);
  template <class Read>
  int read_twice(Read read, const char* operation);
  int renew();
  int reopen();
  int logged(int status, const char* operation);
  int logged(int status);

  std::shared_ptr<ThreadSession> held_;
  std::unique_lock<std::mutex> lock_;  // of what is held
};

}  // namespace zymdb::client

#endif
