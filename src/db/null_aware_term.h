// Terms of a condition that compare with a text that may be empty.
#ifndef ZYMDB_DB_NULL_AWARE_TERM_H
#define ZYMDB_DB_NULL_AWARE_TERM_H

#include <string>

namespace zymdb {

// Appends the term of get_sql_str(), for who makes a condition of many.
void append_null_aware_term(std::string& condition, const char* column, const char* value);

}  // namespace zymdb

#endif
