// What our own database client offers beyond the controller's interface. Another client in the process may
// lack any of it: then nothing happens, and nothing is known.
#ifndef ZYMDB_COMMON_CLIENT_EXTENSIONS_H
#define ZYMDB_COMMON_CLIENT_EXTENSIONS_H

#include <cstdint>
#include <optional>
#include <string>

namespace zymdb {

// What the client says of the calling thread's last failure; empty when there is none.
std::string last_client_error();
void clear_client_error();

// That failure's status; 0 when there is none.
int last_client_status();

// Whether those who open a database that is not there create it.
void allow_creation(bool allowed);

// The generation of the inventory; nothing where it has none.
std::optional<uint64_t> inventory_generation();

// A copy of the inventory as a new file, of which generation it is, and the inventory as an earlier
// generation had it. Throw DatabaseError.
uint64_t copy_inventory(const std::string& path);
void rewind_inventory(uint64_t generation);

}  // namespace zymdb

#endif
