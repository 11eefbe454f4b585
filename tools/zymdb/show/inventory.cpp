#include "show/inventory.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "common/client_extensions.h"
#include "controller/database_client.h"
#include "terminal/failure.h"

namespace zymdb::tool {
namespace {

constexpr char kVariable[] = "ZYMDB_INVENTORY";
constexpr char kSystemInventory[] = "/var/lib/zymdb/inventory.db";

}  // namespace

void choose_inventory(const std::string& path) {
  if (path.empty()) throw CLI::ValidationError("--inventory", "an empty name names no file");
  if (setenv(kVariable, path.c_str(), 1) != 0) throw std::bad_alloc();
}

std::string inventory_location() {
  const char* chosen = std::getenv(kVariable);
  return chosen != nullptr && *chosen != '\0' ? chosen : kSystemInventory;
}

void open_inventory(Opening opening) {
  allow_creation(opening == Opening::kCreating);
  clear_client_error();
  if (get_dmdb_handle() != nullptr) return;
  const auto reason = last_client_error();
  throw Failure(reason.empty() ? "cannot open the inventory " + inventory_location() : reason);
}

void require_status(int status, const std::string& action) {
  if (status == ZYM_DB_STATUS_OK) return;
  require_no_client_error(action);
  throw Failure("cannot " + action + ": " + zym_db_get_error_str(status));
}

void require_no_client_error(const std::string& action) {
  if (const auto error = last_client_error(); !error.empty())
    throw Failure("cannot " + action + ": " + error);
}

}  // namespace zymdb::tool
