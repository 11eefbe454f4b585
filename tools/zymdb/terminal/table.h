// Tables for people, aligned and cut to the terminal.
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

}  // namespace zymdb::tool

#endif
