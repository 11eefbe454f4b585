// Several changes of the inventory as one.
#ifndef ZYMDB_COMMON_TRANSACTION_H
#define ZYMDB_COMMON_TRANSACTION_H

#include "zymdb_db.h"

namespace zymdb {

// The calling thread's transaction, forgotten unless it is committed. Without transactions in the client it
// is nothing: each change then stands on its own. Both operations throw DatabaseError.
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

}  // namespace zymdb

#endif
