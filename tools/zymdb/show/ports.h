// Whose network ports a command is about.
#ifndef ZYMDB_TOOL_SHOW_PORTS_H
#define ZYMDB_TOOL_SHOW_PORTS_H

#include <memory>
#include <string>

#include "records/network.h"
#include "terminal/command_line.h"

namespace zymdb::tool {

// Of all functions when nothing is set.
struct PortSelection {
  std::string function;  // address or function key
  std::string adapter;   // place ("slot 3") or PCI key
};

// Adds `--function` and `--adapter`.
void add_port_options(CLI::App& command, PortSelection& selection);

// Looks the function or adapter up in the open inventory when the ports are listed; throws Failure for one
// that is not there.
records::PortChoice port_choice(std::shared_ptr<const PortSelection> selection);

}  // namespace zymdb::tool

#endif
