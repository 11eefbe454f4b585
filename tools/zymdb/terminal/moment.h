// Times and generations as users write them.
#ifndef ZYMDB_TOOL_TERMINAL_MOMENT_H
#define ZYMDB_TOOL_TERMINAL_MOMENT_H

#include <cstdint>
#include <optional>
#include <string>

namespace zymdb::tool {

// A number and nothing else.
std::optional<uint64_t> parse_number(const std::string& text);

// "2026-01-31", "2026-01-31 12:00", "2026-01-31T12:00:00Z", all UTC, or so long ago: "90s", "15m", "36h",
// "7d". In ms since 1970; nothing for any other text.
std::optional<int64_t> parse_time(const std::string& text);

// What is wrong with a text that is to be a time, or a generation or a time; empty for one that is.
std::string objection_to_time(const std::string& text);
std::string objection_to_moment(const std::string& text);

}  // namespace zymdb::tool

#endif
