// Standard output and standard error: terminals, pipes and files.
#ifndef ZYMDB_TOOL_TERMINAL_TERMINAL_H
#define ZYMDB_TOOL_TERMINAL_TERMINAL_H

#include <cstddef>
#include <string>
#include <string_view>

namespace zymdb::tool {

// To be called first. Descriptors 0 to 2 that the caller left closed are occupied, so that no file of ours,
// the inventory for one, ever becomes "standard output"; writing to them still fails. A reader that goes away
// is told by write_output() and not by a signal.
void prepare_standard_streams();

// `choice` is "always", "never" or "auto": on a terminal that knows colours, unless NO_COLOR is set.
bool want_colors(std::string_view choice);

bool stderr_is_terminal();
size_t stderr_width();

// Writes all of `text` to standard output. Throws ReaderGone, or Failure when it cannot be written.
void write_output(std::string_view text);

// Writes one line "zymdb: …" to standard error; line ends and control characters in it become spaces.
void complain(std::string_view message);

// The same where the system's journal reads standard error: the line begins with its urgency (LOG_WARNING).
void tell_journal(int urgency, std::string_view message);

}  // namespace zymdb::tool

#endif
