// Small rules for texts that firmware and drivers wrote.
#ifndef ZYMDB_COMMON_TEXT_H
#define ZYMDB_COMMON_TEXT_H

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zymdb {

// Without white space and control characters at both ends.
std::string_view trimmed(std::string_view text);

std::string lower_case(std::string_view text);

// In any case of the letters A to Z.
bool is_alike(std::string_view a, std::string_view b);
bool begins_alike(std::string_view text, std::string_view beginning);

// Blanks at both ends aside: runs of digits as numbers, those after "0x" as hexadecimal ones; all else
// character by character, in any case. What ends first comes first: "1.9", "1.10", "1.10.1", "1.10a".
std::weak_ordering natural_order(std::string_view a, std::string_view b);

// The text with U+FFFD for whatever is not UTF-8.
std::string valid_utf8(std::string_view text);

// "0x" and upper-case digits.
std::string hex_text(uint64_t number);

// The number at the start, decimal or with a "0x" prefix; nothing when there is none or it exceeds 64 bits.
std::optional<uint64_t> leading_number(std::string_view text);

// A hexadecimal number without prefix, of at most 8 digits and nothing else.
std::optional<uint32_t> hex_number(std::string_view digits);

// "2026-01-31 12:00:00", in UTC; empty for a time that no calendar has.
std::string utc_text(int64_t seconds_since_1970);
// The same as "2026-01-31T12:00:00Z".
std::string iso_text(int64_t seconds_since_1970);

// "one, two"; empty ones are left out.
std::string listed(const std::vector<std::string>& words);

// Cut to `size` bytes, never inside a UTF-8 character.
std::string_view cut(std::string_view text, size_t size);

// The text trimmed and with control characters and invalid UTF-8 replaced by "?"; nothing when firmware
// filled it with a placeholder ("To Be Filled By O.E.M.", "Not Specified", "N/A", "--", rows of dots,
// blanks).
std::optional<std::string> known_text(std::string_view text);

// A UUID in lower case; nothing for what is none, and for those that firmware bears which nobody gave one.
std::optional<std::string> known_uuid(std::string_view text);

}  // namespace zymdb

#endif
