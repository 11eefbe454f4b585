// The PCI functions of the inventory.
#ifndef ZYMDB_TOOL_SHOW_FUNCTIONS_H
#define ZYMDB_TOOL_SHOW_FUNCTIONS_H

#include <cstdint>
#include <string>
#include <vector>

#include "zymdb_pci.h"

namespace zymdb::tool {

uint32_t key_of(const _ZYMDB_PCI_Generic& function);

// All of them, by key. `action` says what they are read for, for the message of a failure.
std::vector<_ZYMDB_PCI_Generic> all_functions(const std::string& action);

}  // namespace zymdb::tool

#endif
