// The inventory as the commands see it: where it is, whether it opens, and what went wrong with it.
#ifndef ZYMDB_TOOL_SHOW_INVENTORY_H
#define ZYMDB_TOOL_SHOW_INVENTORY_H

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace zymdb::tool {

// From now on the inventory is the one at `path`.
void choose_inventory(const std::string& path);

// The chosen one, else that of ZYMDB_INVENTORY, else the system's.
std::string inventory_location();

// Opens the inventory, creating it when there is none. Throws Failure.
void open_inventory();

// `message`, and what the database client logged as the cause, if it did.
std::string with_logged_error(const std::string& message);

// Throws Failure unless `status` is 0. `action` says what was tried: "read the processors".
void require_status(int status, const std::string& action);

// Throws Failure when the client has logged an error. List operations answer 0 when the rows end early, and
// a part of the hardware must not be taken for the whole.
void require_no_logged_error(const std::string& action);

// Takes over an array that an operation of the library handed out.
template <class T>
std::vector<T> take_array(T* array, size_t count) {
  const std::unique_ptr<T, decltype(&std::free)> owner(array, &std::free);
  return array == nullptr ? std::vector<T>() : std::vector<T>(array, array + count);
}

}  // namespace zymdb::tool

#endif
