// What `zymdb show` and its neighbours list: a record type as a command.
#ifndef ZYMDB_TOOL_SHOW_LISTING_H
#define ZYMDB_TOOL_SHOW_LISTING_H

#include <string>

#include "records/record.h"
#include "terminal/command_line.h"

namespace zymdb::tool {

struct Listing {
  records::RecordType type;
  std::string examples;
  std::string command = type.name;  // the subcommand, where it has another name
  bool is_stored = true;            // in the inventory; else it is read without one
  std::string tree_columns = {};    // of the listing as a tree; empty: its records make none
};

// Adds a command below `parent` with the options that all listings share. Returns it for options of its own.
CLI::App& add_listing(CommandTree& tree, CLI::App& parent, Listing listing);

}  // namespace zymdb::tool

#endif
