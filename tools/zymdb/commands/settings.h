// What the commands on settings share.
#ifndef ZYMDB_TOOL_COMMANDS_SETTINGS_H
#define ZYMDB_TOOL_COMMANDS_SETTINGS_H

#include <string>

#include "commands/commands.h"

namespace zymdb::tool {

void add_settings_import(CLI::App& settings);
void add_settings_list(CommandTree& tree, CLI::App& settings);
void add_settings_set(CLI::App& settings);
void add_settings_pending(CommandTree& tree, CLI::App& settings);

// As require_status, for the statuses that only settings have, too.
void require_settings_status(int status, const std::string& action);

// Throws Failure while the settings are being parsed.
void require_settled_settings();

}  // namespace zymdb::tool

#endif
