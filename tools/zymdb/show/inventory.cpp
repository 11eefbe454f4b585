#include "show/inventory.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

#include "common/client_extensions.h"
#include "common/output_file.h"
#include "common/source_file.h"
#include "controller/database_client.h"
#include "documents/history.h"
#include "documents/snapshot.h"
#include "terminal/failure.h"
#include "terminal/moment.h"

namespace zymdb::tool {
namespace {

constexpr char kVariable[] = "ZYMDB_INVENTORY";
constexpr char kSystemInventory[] = "/var/lib/zymdb/inventory.db";

// Until the program ends.
std::string scratch_file() {
  static const documents::ScratchFolder folder;
  static int count = 0;
  return folder.file("inventory-" + std::to_string(++count) + ".db");
}

// A snapshot is read from its database, unpacked to where nobody else sees it.
void unpack_snapshot(Opening opening) {
  const std::string path = inventory_location();
  if (!documents::is_snapshot_file(path)) return;
  if (opening != Opening::kReading) throw Failure(path + " is a snapshot, which can only be read");
  const std::string database = scratch_file();
  write_new_file(database, documents::unpack(read_source(path), path).database);
  choose_inventory(database);
}

// Of a number the generation, of a time the one that was the newest then.
uint64_t parse_moment(const std::string& moment) {
  if (const auto number = parse_number(moment)) return *number;
  const auto time = parse_time(moment);
  if (!time) throw Failure(objection_to_moment(moment));
  const auto generation = documents::generation_at(documents::read_entries(), *time);
  if (!generation) throw Failure("the inventory's journal does not reach back to " + moment);
  return *generation;
}

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
  unpack_snapshot(opening);
  clear_client_error();
  if (get_dmdb_handle() != nullptr) return;
  const auto reason = last_client_error();
  throw Failure(reason.empty() ? "cannot open the inventory " + inventory_location() : reason);
}

void open_instead(const std::string& path) {
  zym_db_close(get_dmdb_handle());
  choose_inventory(path);
  open_inventory(Opening::kReading);
}

void open_copy() {
  const std::string copy = scratch_file();
  copy_inventory(copy);
  open_instead(copy);
}

void open_moment(const std::string& moment) {
  const auto generation = parse_moment(moment);
  open_copy();
  rewind_inventory(generation);
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
