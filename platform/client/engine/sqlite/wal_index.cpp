#include "client/engine/sqlite/wal_index.h"

namespace zymdb::client::sqlite {
namespace {

constexpr int kFirstPage = 32768;  // bytes of the shared memory's first part

void copy(const volatile uint64_t* from, WalHeader& to) {
  for (uint64_t& word : to) word = *from++;
}

// A byte of it that is not 0 once the header is whole.
bool is_initialized(const WalHeader& header) {
  return reinterpret_cast<const unsigned char*>(header.data())[12] != 0;
}

}  // namespace

bool WalIndex::read(WalHeader& header) {
  if (copies_ == nullptr && !find()) return false;
  WalHeader second;
  copy(copies_, header);
  // Whoever writes begins with the second copy.
  __sync_synchronize();
  copy(copies_ + header.size(), second);
  return header == second && is_initialized(header);
}

bool WalIndex::find() {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database_, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2) return false;
  volatile void* memory = nullptr;
  if (file->pMethods->xShmMap(file, 0, kFirstPage, 0, &memory) != SQLITE_OK) return false;
  copies_ = static_cast<const volatile uint64_t*>(memory);
  return copies_ != nullptr;
}

}  // namespace zymdb::client::sqlite
