// Results as the interface hands them out. A thread keeps the memory of its last few for the next queries.
#ifndef ZYMDB_PLATFORM_CLIENT_RESULT_RESULT_POOL_H
#define ZYMDB_PLATFORM_CLIENT_RESULT_RESULT_POOL_H

#include <memory>

#include "client/result/result.h"

struct zym_db_result_t final : zymdb::client::Result {};

namespace zymdb::client {

struct GiveBack {
  void operator()(zym_db_result_t* result) const noexcept;
};
using PooledResult = std::unique_ptr<zym_db_result_t, GiveBack>;

PooledResult take_result();

}  // namespace zymdb::client

#endif
