#include "db/null_aware_term.h"

#include <exception>

#include "zymdb_db.h"

void zymdb::append_null_aware_term(std::string& condition, const char* column, const char* value) {
  if (value[0] == 0)
    condition.append(column).append(" IS NOT NULL");
  else
    condition.append("(")
        .append(column)
        .append(" IS NULL OR ")
        .append(column)
        .append("!=\"")
        .append(value)
        .append("\")");
}

std::string get_sql_str(const char* column, unsigned char* value) try {
  // Without a name the term breaks off where the name should stand.
  if (column == nullptr) return value[0] == 0 ? "" : "(";
  std::string term;
  zymdb::append_null_aware_term(term, column, reinterpret_cast<const char*>(value));
  return term;
} catch (const std::exception&) {
  return {};
}
