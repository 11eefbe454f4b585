#include "db/values.h"

namespace zymdb {

Values::~Values() {
  if (values_ != nullptr) zym_db_free_content_values(values_);
}

void Values::clear() {
  status_ = ZYM_DB_STATUS_OK;
  note(zym_db_content_clear(values_));
}

int Values::insert(const char* table) {
  if (status_ != ZYM_DB_STATUS_OK) return status_;
  int64_t id = 0;
  return zym_db_insert(handle_, table, values_, 0, &id);
}

int Values::update(const char* table, const char* filter) {
  if (status_ != ZYM_DB_STATUS_OK) return status_;
  return zym_db_update(handle_, table, values_, filter, nullptr, 0, nullptr);
}

}  // namespace zymdb
