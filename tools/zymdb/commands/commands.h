// The command tree. Each command is a file with one function below, which adds it.
#ifndef ZYMDB_TOOL_COMMANDS_COMMANDS_H
#define ZYMDB_TOOL_COMMANDS_COMMANDS_H

#include "show/listings.h"
#include "terminal/command_line.h"

namespace zymdb::tool {

void build_command_tree(CommandTree& tree);

void add_init(CommandTree& tree);
void add_collect(CommandTree& tree);
void add_record(CommandTree& tree);
void add_completion(CommandTree& tree);
void add_link(CommandTree& tree);
void add_watch(CommandTree& tree);
void add_snapshot(CommandTree& tree);
void add_diff(CommandTree& tree);
void add_check(CommandTree& tree);
void add_history(CommandTree& tree);
void add_export(CommandTree& tree);
void add_serve(CommandTree& tree);
void add_settings(CommandTree& tree);
void add_dpu(CommandTree& tree);
void add_retimer(CommandTree& tree);
void add_merge(CommandTree& tree);

void add_vpd(CommandTree& tree);
void add_drive_date(CommandTree& tree);
void add_properties(CommandTree& tree);

}  // namespace zymdb::tool

#endif
