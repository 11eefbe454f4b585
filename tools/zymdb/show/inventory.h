// The inventory as the commands see it: where it is, whether it opens, and what went wrong with it.
#ifndef ZYMDB_TOOL_SHOW_INVENTORY_H
#define ZYMDB_TOOL_SHOW_INVENTORY_H

#include <string>

namespace zymdb::tool {

// From now on the inventory is the one at `path`. Throws CLI::ValidationError for an empty one.
void choose_inventory(const std::string& path);

// The chosen one, else that of ZYMDB_INVENTORY, else the system's.
std::string inventory_location();

// Only who fills an inventory creates what is not there: a slip in a name must not leave an empty inventory
// behind. Who only reads takes a snapshot for an inventory.
enum class Opening { kReading, kChanging, kCreating };

// Throws Failure when the inventory cannot be opened.
void open_inventory(Opening opening);

// The inventory at the path, opened for reading in place of the one that is open.
void open_instead(const std::string& path);

// A copy of the inventory, opened in its place, which nobody else sees; and that copy as a former moment had
// it: the number of a generation, or a time. Throws Failure for a moment that the journal does not reach.
void open_copy();
void open_moment(const std::string& moment);

// Throws Failure unless `status` is 0. `action` says what was tried: "append the event".
void require_status(int status, const std::string& action);

// Throws Failure when a call of the database client has failed since the inventory was opened: some
// operations answer 0 all the same.
void require_no_client_error(const std::string& action);

}  // namespace zymdb::tool

#endif
