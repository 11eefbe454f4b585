#include "show/inventory.h"

#include "controller/database_client.h"
#include "terminal/failure.h"
#include "terminal/log.h"

namespace zymdb::tool {
namespace {

constexpr char kVariable[] = "ZYMDB_INVENTORY";
constexpr char kSystemInventory[] = "/var/lib/zymdb/inventory.db";

}  // namespace

void choose_inventory(const std::string& path) {
  if (setenv(kVariable, path.c_str(), 1) != 0) throw std::bad_alloc();
}

std::string inventory_location() {
  const char* chosen = std::getenv(kVariable);
  return chosen != nullptr && *chosen != '\0' ? chosen : kSystemInventory;
}

void open_inventory() {
  if (get_dmdb_handle() != nullptr) return;
  const auto reason = first_logged_error();
  throw Failure(reason.empty() ? "cannot open the inventory " + inventory_location() : reason);
}

std::string with_logged_error(const std::string& message) {
  const auto logged = first_logged_error();
  return logged.empty() ? message : message + ": " + logged;
}

void require_status(int status, const std::string& action) {
  if (status == ZYM_DB_STATUS_OK) return;
  require_no_logged_error(action);
  throw Failure("cannot " + action + ": " + zym_db_get_error_str(status));
}

void require_no_logged_error(const std::string& action) {
  if (!first_logged_error().empty()) throw Failure(with_logged_error("cannot " + action));
}

}  // namespace zymdb::tool
