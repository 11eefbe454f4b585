// Tables for people, aligned and cut to the terminal, and the same records for other programs.
#ifndef ZYMDB_TOOL_TERMINAL_TABLE_H
#define ZYMDB_TOOL_TERMINAL_TABLE_H

#include <string>

#include "records/record.h"

namespace zymdb::tool {

struct TableStyle {
  bool headings = true;
  bool colors = false;
  bool tree = false;  // the first column shows which row is below which
};

// On a terminal the lines are as long as it is wide, and texts that do not fit are cut; elsewhere everything
// is printed in full. Bytes that the terminal could take for commands are shown as \xHH.
std::string render_table(const records::Sheet& sheet, const TableStyle& style);

// For other programs, with the keys of the fields, the values as tables have them and nothing for what is not
// known. As RFC 4180 says, the keys first where `headings` are wanted:
std::string render_csv(const records::Sheet& sheet, bool headings);

// KEY="VALUE" with a blank between two, a line a record, which a shell can evaluate: what could mean
// something to it within quotes, and bytes that are not printable ASCII, stand there as \xHH.
std::string render_pairs(const records::Sheet& sheet);

}  // namespace zymdb::tool

#endif
