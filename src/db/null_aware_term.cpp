#include <exception>
#include <string>

#include "zymdb_db.h"

std::string get_sql_str(const char* column, unsigned char* value) try {
  const bool is_empty = value[0] == 0;
  // Without a name the term breaks off where the name should stand.
  if (column == nullptr) return is_empty ? "" : "(";

  std::string term(column);
  if (is_empty) return term.append(" IS NOT NULL");
  term.insert(0, "(").append(" IS NULL OR ").append(column).append("!=\"");
  return term.append(reinterpret_cast<const char*>(value)).append("\")");
} catch (const std::exception&) {
  return {};
}
