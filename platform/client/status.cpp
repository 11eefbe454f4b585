#include "client/status.h"

#include "controller/database_client.h"

namespace zymdb::client {
namespace {

struct StatusText {
  int status;
  const char* text;
};

constexpr StatusText kTexts[] = {
    {ZYM_DB_STATUS_OK, "success"},
    {ZYM_DB_STATUS_ERROR, "the statement failed"},
    {ZYM_DB_STATUS_INVALID_PARAM, "invalid argument"},
    {ZYM_DB_STATUS_NO_MEMORY, "out of memory"},
    {ZYM_DB_STATUS_NO_DB, "no database"},
    {ZYM_DB_STATUS_ROW, "a row is available"},
    {ZYM_DB_STATUS_DONE, "no more rows"},
    {ZYM_DB_STATUS_NOT_FOUND, "no matching record"},
    {kStatusBusy, "the database is locked by another writer"},
    {kStatusReadOnly, "the database is read-only"},
    {kStatusCorrupt, "the database file is damaged or is no database"},
    {kStatusFull, "no space left for the database"},
    {kStatusIo, "the database file cannot be opened, read or written"},
    {kStatusTimedOut, "the statement took too long"},
    {kStatusTooLarge, "the statement or its result is too large"},
    {kStatusRefused, "the statement is not allowed"},
    {kStatusConstraint, "the table does not admit the value"},
};

}  // namespace
}  // namespace zymdb::client

const char* zym_db_get_error_str(int status) {
  for (const auto& entry : zymdb::client::kTexts) {
    if (entry.status == status) return entry.text;
  }
  return "unknown status";
}
