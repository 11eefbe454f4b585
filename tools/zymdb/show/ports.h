// Network ports as the commands read them: from which functions, and what they are called.
#ifndef ZYMDB_TOOL_SHOW_PORTS_H
#define ZYMDB_TOOL_SHOW_PORTS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "show/listing.h"
#include "zymdb_network.h"

namespace zymdb::tool {

struct PhysicalPort : _ZYMDB_PCI_PhysicalPort {
  uint32_t PCIFuncKey = 0;
};
struct LogicalPort : _ZYMDB_PCI_LogicalPort {
  uint32_t PCIFuncKey = 0;
};

// Whose ports are wanted; of all functions when nothing is set.
struct PortSelection {
  std::string function;  // address or function key
  std::string adapter;   // place ("slot 3", "on board") or PCI key
};

// Adds `--function` and `--adapter`.
void add_port_options(CLI::App& command, PortSelection& selection);

// In the order of the functions' keys. Throws Failure, also for a function or adapter that is not there.
std::vector<PhysicalPort> read_physical_ports(const PortSelection& selection);
std::vector<LogicalPort> read_logical_ports(const PortSelection& selection);

// The function key of "0000:3b:00.0", "3b:00.0" or a key in decimal or with "0x". Throws
// CLI::ValidationError for anything else.
uint32_t parse_function(const std::string& text);

// `show ports`.
Listing physical_port_listing(const std::shared_ptr<PortSelection>& selection);

// "up", "down", or what else a link's state is called.
std::string link_status_text(uint32_t status);
// "25 Gbit/s"; empty for 0.
std::string link_speed_text(uint64_t megabits);

}  // namespace zymdb::tool

#endif
