// Several changes of the inventory as one.
#ifndef ZYMDB_COMMON_TRANSACTION_H
#define ZYMDB_COMMON_TRANSACTION_H

#include <functional>

#include "common/client_objects.h"
#include "zymdb_db.h"

namespace zymdb {

// Whoever held the inventory was waited for: to wait once more is not for those who repeat transactions.
class NotBegun : public DatabaseError {
 public:
  using DatabaseError::DatabaseError;
};

// The calling thread's transaction, forgotten unless it is committed. Without transactions in the client it
// is nothing: each change then stands on its own. The constructor throws NotBegun, commit() DatabaseError.
class Transaction {
 public:
  explicit Transaction(_zym_db_handle_t* handle);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void commit();

 private:
  _zym_db_handle_t* handle_;
  bool open_ = false;
};

// Runs `work`, which makes a transaction and throws where that fails, and a few times more where another
// writer was first, perhaps on another node of a cluster: nothing of the transaction is left then.
void repeat_overtaken(const std::function<void()>& work);

}  // namespace zymdb

#endif
