#include "pci_settings/rewritten_rows.h"

#include <dlfcn.h>

#include "controller/database_client.h"

namespace {

int64_t rewritten = 0;

}  // namespace

int64_t rewritten_rows() {
  return rewritten;
}
void reset_rewritten_rows() {
  rewritten = 0;
}

// Stands between the library and its database, and counts what the library does not ask for.
extern "C" [[gnu::visibility("default")]] int zym_db_update(_zym_db_handle_t* handle, const char* table,
                                                            const zym_db_content_values_t* values,
                                                            const char* where, const _zym_db_param_t* params,
                                                            int nparams, int64_t* changed) {
  static const auto update = reinterpret_cast<decltype(&zym_db_update)>(dlsym(RTLD_NEXT, "zym_db_update"));
  int64_t rows = 0;
  const int status = update(handle, table, values, where, params, nparams, &rows);
  rewritten += rows;
  if (changed != nullptr) *changed = rows;
  return status;
}
