// Comma-separated values as RFC 4180 has them.
#ifndef ZYMDB_COMMON_CSV_H
#define ZYMDB_COMMON_CSV_H

#include <string>
#include <string_view>
#include <vector>

namespace zymdb {

// In quotes, its own doubled, where a comma, a quote or an end of line stands in it; else as it is.
inline std::string csv_field(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + "\"";
}

// With its end. A single field that is empty stands in quotes: a line with nothing on it would be no row to
// some.
inline std::string csv_row(const std::vector<std::string>& fields) {
  if (fields.size() == 1 && fields.front().empty()) return "\"\"\r\n";
  std::string row;
  for (const std::string& field : fields) row += (&field == &fields.front() ? "" : ",") + csv_field(field);
  return row + "\r\n";
}

}  // namespace zymdb

#endif
