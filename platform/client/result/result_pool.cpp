#include "client/result/result_pool.h"

#include <array>
#include <utility>

#include "client/per_thread.h"

namespace zymdb::client {
namespace {

struct Pool {
  std::array<zym_db_result_t*, 2> kept{};

  Pool() = default;
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() {
    for (zym_db_result_t* result : kept) delete result;
  }
};

}  // namespace

PooledResult take_result() {
  if (Pool* const pool = PerThread<Pool>::get(); pool != nullptr) {
    for (zym_db_result_t*& place : pool->kept) {
      if (place != nullptr) return PooledResult(std::exchange(place, nullptr));
    }
  }
  return PooledResult(new zym_db_result_t);
}

// Of a thread that took one: what is given back elsewhere goes.
void GiveBack::operator()(zym_db_result_t* result) const noexcept {
  result->forget_names();
  if (Pool* const pool = PerThread<Pool>::known(); pool != nullptr && result->is_small()) {
    for (zym_db_result_t*& place : pool->kept) {
      if (place != nullptr) continue;
      place = result;
      return;
    }
  }
  delete result;
}

}  // namespace zymdb::client
