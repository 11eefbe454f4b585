#include "client/engine/sqlite/wal_index.h"

namespace zymdb::client::sqlite {
namespace {

constexpr int kFirstPage = 32768;    // bytes of the shared memory's first part
constexpr size_t kInitialized = 12;  // not 0 once the header is whole

void copy(const volatile unsigned char* from, WalHeader& to) {
  for (unsigned char& byte : to) byte = *from++;
}

}  // namespace

bool read_wal_header(sqlite3* database, WalHeader& header) {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  if (file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2) return false;
  volatile void* memory = nullptr;
  if (file->pMethods->xShmMap(file, 0, kFirstPage, 0, &memory) != SQLITE_OK || memory == nullptr)
    return false;
  const auto* const first = static_cast<const volatile unsigned char*>(memory);
  WalHeader second;
  copy(first, header);
  file->pMethods->xShmBarrier(file);
  copy(first + header.size(), second);
  return header == second && header[kInitialized] != 0;
}

}  // namespace zymdb::client::sqlite
