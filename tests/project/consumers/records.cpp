// The C++ part of the interface: inserts a row, finds it, deletes it, and prints whether it was the same one.
#include <controller/database_client.h>
#include <zymdb_db.h>
#include <zymdb_platform.h>

#include <cstdio>

int main() {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return 1;
  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  zym_db_content_put_text(values, "Socket", "CPU 9");
  zym_db_begin(handle);
  const int64_t inserted = insert_db_record(handle, "Processor", values);
  zym_db_commit(handle);
  zym_db_free_content_values(values);
  const int64_t found = find_db_record(handle, "Processor", "Socket=\"CPU 9\"");
  const int deleted = delete_db_record(handle, "Processor", "Socket=\"CPU 9\"", nullptr, 0);
  std::printf("%s\n", inserted == found && found > 0 && deleted == ZYM_DB_STATUS_OK ? "found" : "lost");
}
