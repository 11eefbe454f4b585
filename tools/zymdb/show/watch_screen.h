// A listing on a screen of its own, drawn anew where it changes.
#ifndef ZYMDB_TOOL_SHOW_WATCH_SCREEN_H
#define ZYMDB_TOOL_SHOW_WATCH_SCREEN_H

#include "show/view.h"

namespace zymdb::tool {

// The rows and columns of the view, until it is interrupted. On a terminal only the changed places are drawn;
// elsewhere the table is printed anew after a change. Looks every `interval` seconds where the system does
// not tell of changes.
void watch_on_screen(const records::RecordType& type, const View& view, unsigned interval);

}  // namespace zymdb::tool

#endif
