// Whatever texts an operation is given: it answers a known status, its texts end within their fields, and it
// changes rows of its own table at most. There is a target for each engine.
//
// An input's first line names the operation, the lines after it are its texts.
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "checks.h"
#include "operations.h"
#include "support/system_log.h"
#include "watched_inventory.h"

namespace {

using namespace zymdb::fuzz;
using Kind = Operation::Kind;

// What the operation did to the inventory, against what it may do.
void require_contained(const WatchedInventory::Changes& changes, const Operation& operation,
                       const Texts& texts) {
  const auto is_own = [&](const std::string& table) {
    if (operation.table == nullptr) return strcasecmp(texts[0].c_str(), table.c_str()) == 0;
    return (" " + std::string(operation.table) + " ").find(" " + table + " ") != std::string::npos;
  };
  for (const std::string& table : changes.tables)
    require(operation.kind == Kind::kWrites && is_own(table), "changes a row that is not its own", table);
  require(!changes.has_entry || !changes.tables.empty(), "accounts for no change");
}

// Whatever was done is undone afterwards: every input finds the same inventory.
void run(WatchedInventory& inventory, const Operation& operation, Texts texts) {
  if (operation.kind == Kind::kShows) inventory.store(operation.table, texts);
  inventory.forget();
  operation.run(texts);
  require_contained(inventory.changes(), operation, texts);
  if (operation.kind == Kind::kShows) inventory.restore(operation.table);
  inventory.restore();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto inventory = WatchedInventory::make();
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view name = input.substr(0, input.find('\n'));
  const auto all = operations();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
  if (found == all.end()) return 0;
  system_log().clear();
  const bool has_texts = name.size() < input.size();
  run(*inventory, *found, has_texts ? Texts(input.substr(name.size() + 1), found->texts) : Texts({}, 0));
  return 0;
}
