#include <sstream>

#include "zymdb_db.h"

std::string get_sql_str(const char* column, unsigned char* value) {
  std::ostringstream term;
  // A null name puts the stream into its failed state: nothing after it is written.
  if (value[0] == 0) {
    term << column << " IS NOT NULL";
  } else {
    term << "(" << column << " IS NULL OR " << column << "!=\"" << value << "\")";
  }
  return term.str();
}
