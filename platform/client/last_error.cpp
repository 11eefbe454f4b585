#include "client/last_error.h"

#include <cstdarg>
#include <cstdio>

#include "common/one_line.h"
#include "controller/database_client.h"
#include "controller/ruvo_log.h"
#include "zymdb_platform.h"

namespace zymdb::client {
namespace {

// Of a fixed size and without a destructor: it can be written where there is no memory, and as long as the
// thread runs anything at all.
struct LastError {
  int status;
  char text[kLineSize];
};

constinit thread_local LastError last{};

}  // namespace

int report_failure(int status, const char* format, ...) noexcept {
  last.status = status;
  va_list values;
  va_start(values, format);
  std::vsnprintf(last.text, sizeof last.text, format, values);
  va_end(values);
  keep_on_one_line(last.text);
  ruvo_log::logErr("%s", last.text);
  return status;
}

int note_failure(int status) noexcept {
  last.status = status;
  std::snprintf(last.text, sizeof last.text, "%s", zym_db_get_error_str(status));
  return status;
}

}  // namespace zymdb::client

const char* zym_db_last_error(int* status) {
  if (status != nullptr) *status = zymdb::client::last.status;
  return zymdb::client::last.text;
}

void zym_db_clear_error() {
  zymdb::client::last.status = 0;
  zymdb::client::last.text[0] = 0;
}
