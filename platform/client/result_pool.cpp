#include "client/result_pool.h"

#include <array>
#include <utility>

namespace zymdb::client {
namespace {

thread_local bool thread_ends = false;

struct Pool {
  std::array<zym_db_result_t*, 2> kept{};

  Pool() = default;
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() {
    thread_ends = true;
    for (zym_db_result_t* result : kept) delete result;
  }
};

thread_local Pool pool;

}  // namespace

ResultPtr take_result() {
  if (!thread_ends) {
    for (zym_db_result_t*& place : pool.kept) {
      if (place != nullptr) return ResultPtr(std::exchange(place, nullptr));
    }
  }
  return ResultPtr(new zym_db_result_t);
}

void GiveBack::operator()(zym_db_result_t* result) const noexcept {
  result->forget_names();
  if (!thread_ends && result->is_small()) {
    for (zym_db_result_t*& place : pool.kept) {
      if (place != nullptr) continue;
      place = result;
      return;
    }
  }
  delete result;
}

}  // namespace zymdb::client
