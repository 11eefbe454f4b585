// What the commands on settings share.
#ifndef ZYMDB_TOOL_COMMANDS_SETTINGS_H
#define ZYMDB_TOOL_COMMANDS_SETTINGS_H

#include "commands/commands.h"

namespace zymdb::tool {

void add_settings_import(CLI::App& settings);
void add_settings_list(CommandTree& tree, CLI::App& settings);
void add_settings_set(CLI::App& settings);
void add_settings_pending(CommandTree& tree, CLI::App& settings);

}  // namespace zymdb::tool

#endif
