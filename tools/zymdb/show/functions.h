// PCI functions and adapters as users name them.
#ifndef ZYMDB_TOOL_SHOW_FUNCTIONS_H
#define ZYMDB_TOOL_SHOW_FUNCTIONS_H

#include <cstdint>
#include <optional>
#include <string>

#include "common/pci_address.h"
#include "terminal/command_line.h"

namespace zymdb::tool {

// Of an address or key that the parser has let through. Throws Failure unless the open inventory has such a
// function. Nothing for an empty text.
FunctionKey find_function(const std::string& text);
std::optional<FunctionKey> find_optional_function(const std::string& text);

// The PCI key of an adapter named by its place ("slot 3") or key. Throws Failure for one that is not there.
uint32_t find_adapter(const std::string& text);

// Adds `--pci-ids FILE`.
void add_pci_ids_option(CLI::App& command, std::string& path);

// Adds a FUNCTION that must be given, or `--function`.
void add_function_argument(CLI::App& command, std::string& function, const std::string& help);
CLI::Option& add_function_option(CLI::App& command, std::string& function, const std::string& help);

}  // namespace zymdb::tool

#endif
