// The command tree. Each command is a file with one function below, which adds it.
#ifndef ZYMDB_TOOL_COMMANDS_COMMANDS_H
#define ZYMDB_TOOL_COMMANDS_COMMANDS_H

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <vector>

#include "show/listing.h"

namespace zymdb::tool {

struct CommandTree {
  CLI::App app;
  // For completion: the words that an option takes. An option that takes a list of them, separated by commas,
  // has the type name of kListType; one that takes a file or folder has kFileType or kFolderType.
  std::map<const CLI::Option*, std::vector<std::string>> words;
};

inline constexpr char kListType[] = "LIST";
inline constexpr char kFileType[] = "FILE";
inline constexpr char kFolderType[] = "DIR";

void build_command_tree(CommandTree& tree);

void add_init(CommandTree& tree);
void add_collect(CommandTree& tree);
void add_completion(CommandTree& tree);
void add_link(CommandTree& tree);
void add_watch(CommandTree& tree);
void add_settings(CommandTree& tree);
void add_dpu(CommandTree& tree);
void add_retimer(CommandTree& tree);
void add_merge(CommandTree& tree);

void add_vpd(CommandTree& tree);
void add_drive_date(CommandTree& tree);
void add_properties(CommandTree& tree);

void add_show_drives(CommandTree& tree, CLI::App& show);
void add_show_backplanes(CommandTree& tree, CLI::App& show);
void add_show_processors(CommandTree& tree, CLI::App& show);
void add_show_adapters(CommandTree& tree, CLI::App& show);
void add_show_ports(CommandTree& tree, CLI::App& show);
void add_show_firmware(CommandTree& tree, CLI::App& show);
void add_show_memory(CommandTree& tree, CLI::App& show);
void add_show_gpus(CommandTree& tree, CLI::App& show);
void add_show_cards(CommandTree& tree, CLI::App& show);
void add_show_functions(CommandTree& tree, CLI::App& show);

// Adds `show LISTING` with the options that all listings share. Returns it for options of its own.
CLI::App& add_listing(CommandTree& tree, CLI::App& show, Listing listing, const std::string& examples);

// Adds `--pci-ids FILE`.
void add_pci_ids_option(CLI::App& command, std::string& path);

}  // namespace zymdb::tool

#endif
