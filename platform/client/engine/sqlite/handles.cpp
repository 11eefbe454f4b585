#include "client/engine/sqlite/handles.h"

#include <cerrno>
#include <cstring>

#include "client/status.h"

namespace zymdb::client::sqlite {
namespace {

struct Mapping {
  int code;
  int status;
};

constexpr Mapping kMappings[] = {
    {SQLITE_OK, ZYM_DB_STATUS_OK},        {SQLITE_NOMEM, ZYM_DB_STATUS_NO_MEMORY},
    {SQLITE_BUSY, kStatusBusy},           {SQLITE_LOCKED, kStatusBusy},
    {SQLITE_READONLY, kStatusReadOnly},   {SQLITE_PERM, kStatusReadOnly},
    {SQLITE_CORRUPT, kStatusCorrupt},     {SQLITE_NOTADB, kStatusCorrupt},
    {SQLITE_FULL, kStatusFull},           {SQLITE_IOERR, kStatusIo},
    {SQLITE_CANTOPEN, kStatusIo},         {SQLITE_PROTOCOL, kStatusIo},
    {SQLITE_INTERRUPT, kStatusTimedOut},  {SQLITE_TOOBIG, kStatusTooLarge},
    {SQLITE_AUTH, kStatusRefused},        {SQLITE_CONSTRAINT, kStatusConstraint},
    {SQLITE_MISMATCH, kStatusConstraint},
};

// What the system said last to a file of the connection that failed; 0 when none did.
int system_error(sqlite3* database) {
  for (const int which : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
    sqlite3_file* file = nullptr;
    sqlite3_file_control(database, "main", which, &file);
    if (file == nullptr || file->pMethods == nullptr) continue;
    int error = 0;
    file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
    if (error != 0) return error;
  }
  return sqlite3_system_errno(database);
}

// SQLite takes a device that cannot be read for a damaged file, and knows but one of the ways to have no
// room.
int status_by_cause(int status, int error) {
  if (status == kStatusCorrupt && error == EIO) return kStatusIo;
  const bool no_room = error == ENOSPC || error == EDQUOT || error == EFBIG;
  return status == kStatusIo && no_room ? kStatusFull : status;
}

}  // namespace

void leave_wal(sqlite3* database) {
  if (database != nullptr) sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

int status_of(int code) {
  if (code == SQLITE_IOERR_NOMEM) return ZYM_DB_STATUS_NO_MEMORY;
  for (const Mapping& mapping : kMappings) {
    if (mapping.code == (code & 0xFF)) return mapping.status;
  }
  return ZYM_DB_STATUS_ERROR;
}

Failure failure_of(sqlite3* database, int code) {
  const int status = status_of(code);
  if (database == nullptr || !is_of_files(status)) {
    return {status, database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(code)};
  }
  const int error = system_error(database);
  Failure failure{status_by_cause(status, error), sqlite3_errmsg(database)};
  if (failure.status == kStatusFull) failure.reason = sqlite3_errstr(SQLITE_FULL);
  if (failure.status == kStatusIo) failure.reason = sqlite3_errstr(SQLITE_IOERR);
  if (error != 0) failure.reason.append(": ").append(std::strerror(error));
  return failure;
}

bool is_lasting(int status) {
  return status == kStatusCorrupt || status == kStatusIo || status == kStatusReadOnly;
}

bool is_of_files(int status) {
  return is_lasting(status) || status == kStatusFull;
}

}  // namespace zymdb::client::sqlite
