#include "common/client_extensions.h"

#include "common/client_objects.h"
#include "controller/database_client.h"

extern "C" {
const char* zym_db_last_error(int* status) __attribute__((weak));
void zym_db_clear_error(void) __attribute__((weak));
void zym_db_allow_creation(int allowed) __attribute__((weak));
int zym_db_generation(_zym_db_handle_t* handle, uint64_t* generation) __attribute__((weak));
int zym_db_snapshot(_zym_db_handle_t* handle, const char* path, uint64_t* generation) __attribute__((weak));
int zym_db_rewind(_zym_db_handle_t* handle, uint64_t generation) __attribute__((weak));
}

namespace zymdb {
namespace {

void require(bool is_done, const std::string& action) {
  if (is_done) return;
  const std::string error = last_client_error();
  throw DatabaseError(
      "cannot " + action + ": " + (error.empty() ? "the database client cannot do that" : error),
      error.empty() ? ZYM_DB_STATUS_ERROR : last_client_status());
}

}  // namespace

std::string last_client_error() {
  return zym_db_last_error != nullptr ? zym_db_last_error(nullptr) : "";
}

int last_client_status() {
  int status = 0;
  if (zym_db_last_error != nullptr) zym_db_last_error(&status);
  return status;
}

void clear_client_error() {
  if (zym_db_clear_error != nullptr) zym_db_clear_error();
}

void allow_creation(bool allowed) {
  if (zym_db_allow_creation != nullptr) zym_db_allow_creation(allowed ? 1 : 0);
}

std::optional<uint64_t> inventory_generation() {
  uint64_t generation = 0;
  const bool is_known =
      zym_db_generation != nullptr && zym_db_generation(get_dmdb_handle(), &generation) == 0;
  return is_known ? std::optional(generation) : std::nullopt;
}

uint64_t copy_inventory(const std::string& path) {
  uint64_t generation = 0;
  require(zym_db_snapshot != nullptr && zym_db_snapshot(get_dmdb_handle(), path.c_str(), &generation) == 0,
          "copy the inventory");
  return generation;
}

void rewind_inventory(uint64_t generation) {
  require(zym_db_rewind != nullptr && zym_db_rewind(get_dmdb_handle(), generation) == 0,
          "go back to generation " + std::to_string(generation));
}

}  // namespace zymdb
