#include "common/client_extensions.h"

extern "C" {
const char* zym_db_last_error(int* status) __attribute__((weak));
void zym_db_clear_error(void) __attribute__((weak));
void zym_db_allow_creation(int allowed) __attribute__((weak));
}

namespace zymdb {

std::string last_client_error() {
  return zym_db_last_error != nullptr ? zym_db_last_error(nullptr) : "";
}

void clear_client_error() {
  if (zym_db_clear_error != nullptr) zym_db_clear_error();
}

void allow_creation(bool allowed) {
  if (zym_db_allow_creation != nullptr) zym_db_allow_creation(allowed ? 1 : 0);
}

}  // namespace zymdb
