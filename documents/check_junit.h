// What came of a check as JUnit XML, which continuous integration reads.
#ifndef ZYMDB_DOCUMENTS_CHECK_JUNIT_H
#define ZYMDB_DOCUMENTS_CHECK_JUNIT_H

#include <string>
#include <vector>

#include "documents/check.h"

namespace zymdb::documents {

// One test case for each expectation, of the class "zymdb.CLASS".
std::string to_junit(const std::vector<Verdict>& verdicts);

}  // namespace zymdb::documents

#endif
