// The listings of `zymdb show`. Each function adds one, or several that are alike.
#ifndef ZYMDB_TOOL_SHOW_LISTINGS_H
#define ZYMDB_TOOL_SHOW_LISTINGS_H

#include "terminal/command_line.h"

namespace zymdb::tool {

void add_show_cards(CommandTree& tree, CLI::App& show);
void add_show_drives(CommandTree& tree, CLI::App& show);
void add_show_functions(CommandTree& tree, CLI::App& show);
void add_show_pldm(CommandTree& tree, CLI::App& show);
void add_show_ports(CommandTree& tree, CLI::App& show);
void add_show_whole(CommandTree& tree, CLI::App& show);

}  // namespace zymdb::tool

#endif
