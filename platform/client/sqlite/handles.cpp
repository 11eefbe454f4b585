#include "client/sqlite/handles.h"

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

}  // namespace

int status_of(int code) {
  if (code == SQLITE_IOERR_NOMEM) return ZYM_DB_STATUS_NO_MEMORY;
  for (const Mapping& mapping : kMappings) {
    if (mapping.code == (code & 0xFF)) return mapping.status;
  }
  return ZYM_DB_STATUS_ERROR;
}

bool is_lasting(int status) {
  return status == kStatusCorrupt || status == kStatusIo;
}

}  // namespace zymdb::client::sqlite
