#include "records/reading.h"

#include <utility>

namespace zymdb::records {

Reading::Reading(std::string what) : what_(std::move(what)) {
  clear_client_error();
}

void Reading::require(int status) const {
  if (status == ZYM_DB_STATUS_OK) return;
  require_whole();
  throw DatabaseError("cannot read the " + what_ + ": " + zym_db_get_error_str(status), status);
}

void Reading::require_whole() const {
  if (const auto error = last_client_error(); !error.empty())
    throw DatabaseError("cannot read the " + what_ + ": " + error, last_client_status());
}

}  // namespace zymdb::records
