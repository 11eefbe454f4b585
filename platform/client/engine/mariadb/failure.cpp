#include "client/engine/mariadb/failure.h"

#include <errmsg.h>
#include <mysqld_error.h>

#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

struct Mapping {
  unsigned code;
  int status;
  Aftermath aftermath = Aftermath::kUsable;
};

constexpr Mapping kMappings[] = {
    // Another's transaction was first.
    {ER_LOCK_DEADLOCK, kStatusBusy, Aftermath::kTransactionLost},
    {ER_LOCK_WAIT_TIMEOUT, kStatusBusy, Aftermath::kTransactionLost},
    {ER_CHECKREAD, kStatusBusy, Aftermath::kTransactionLost},
    // The server goes, or does not belong to the cluster.
    {CR_SERVER_GONE_ERROR, kStatusIo, Aftermath::kConnectionLost},
    {CR_SERVER_LOST, kStatusIo, Aftermath::kConnectionLost},
    {CR_CONN_HOST_ERROR, kStatusIo, Aftermath::kConnectionLost},
    {CR_CONNECTION_ERROR, kStatusIo, Aftermath::kConnectionLost},
    {CR_COMMANDS_OUT_OF_SYNC, kStatusIo, Aftermath::kConnectionLost},
    {CR_MALFORMED_PACKET, kStatusIo, Aftermath::kConnectionLost},
    {CR_ERR_NET_READ, kStatusIo, Aftermath::kConnectionLost},
    {CR_ERR_NET_WRITE, kStatusIo, Aftermath::kConnectionLost},
    {ER_UNKNOWN_COM_ERROR, kStatusIo, Aftermath::kConnectionLost},
    {ER_SERVER_SHUTDOWN, kStatusIo, Aftermath::kConnectionLost},
    {ER_CONNECTION_KILLED, kStatusIo, Aftermath::kConnectionLost},
    {ER_NET_READ_ERROR, kStatusIo, Aftermath::kConnectionLost},
    {ER_NET_READ_INTERRUPTED, kStatusIo, Aftermath::kConnectionLost},
    {ER_NET_ERROR_ON_WRITE, kStatusIo, Aftermath::kConnectionLost},
    {ER_NET_WRITE_INTERRUPTED, kStatusIo, Aftermath::kConnectionLost},
    // What may not be done here.
    {ER_OPTION_PREVENTS_STATEMENT, kStatusReadOnly},
    {ER_READ_ONLY_MODE, kStatusReadOnly},
    {ER_TABLEACCESS_DENIED_ERROR, kStatusReadOnly},
    {ER_COLUMNACCESS_DENIED_ERROR, kStatusReadOnly},
    {ER_DBACCESS_DENIED_ERROR, kStatusReadOnly},
    {ER_CRASHED_ON_USAGE, kStatusCorrupt},
    {ER_NOT_KEYFILE, kStatusCorrupt},
    {ER_NO_SUCH_TABLE, kStatusCorrupt},
    {ER_BAD_FIELD_ERROR, kStatusCorrupt},
    {ER_DISK_FULL, kStatusFull},
    {ER_RECORD_FILE_FULL, kStatusFull},
    {ER_ERROR_ON_READ, kStatusIo},
    {ER_ERROR_ON_WRITE, kStatusIo},
    {ER_STATEMENT_TIMEOUT, kStatusTimedOut},
    // A sort that was interrupted.
    {ER_FILSORT_ABORT, kStatusTimedOut},
    {ER_QUERY_INTERRUPTED, kStatusTimedOut},
    {ER_NET_PACKET_TOO_LARGE, kStatusTooLarge},
    {CR_NET_PACKET_TOO_LARGE, kStatusTooLarge},
    {ER_STACK_OVERRUN_NEED_MORE, kStatusTooLarge},
    {ER_TOO_BIG_ROWSIZE, kStatusTooLarge},
    {ER_DUP_ENTRY, kStatusConstraint},
    {ER_BAD_NULL_ERROR, kStatusConstraint},
    {ER_NO_DEFAULT_FOR_FIELD, kStatusConstraint},
    {ER_DATA_TOO_LONG, kStatusConstraint},
    {ER_WARN_DATA_OUT_OF_RANGE, kStatusConstraint},
    {ER_TRUNCATED_WRONG_VALUE_FOR_FIELD, kStatusConstraint},
    {CR_OUT_OF_MEMORY, ZYM_DB_STATUS_NO_MEMORY},
    {ER_OUTOFMEMORY, ZYM_DB_STATUS_NO_MEMORY},
    {ER_OUT_OF_RESOURCES, ZYM_DB_STATUS_NO_MEMORY},
};

}  // namespace

Failure failure_of(unsigned code, const char* words) {
  Failure failure{ZYM_DB_STATUS_ERROR, std::string(words) + " (" + std::to_string(code) + ")"};
  failure.code = code;
  for (const Mapping& mapping : kMappings) {
    if (mapping.code != code) continue;
    failure.status = mapping.status;
    failure.aftermath = mapping.aftermath;
    break;
  }
  return failure;
}

}  // namespace zymdb::client::mariadb
