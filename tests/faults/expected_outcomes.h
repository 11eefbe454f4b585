// What a caller sees of each operation when all goes well, and when one call to the client fails.
#ifndef ZYMDB_TESTS_FAULTS_EXPECTED_OUTCOMES_H
#define ZYMDB_TESTS_FAULTS_EXPECTED_OUTCOMES_H

#include <cstdint>
#include <vector>

#include "faults/example_rows.h"
#include "faults/operations.h"

namespace faults {

// The outcome of a failure of `call`. That names an operation of the client, with a table or without, and
// with a number if one of several is meant: "step", "step PCIs", "step PCIs#1" is the second step through
// PCIs. "query" is any query, "read" any reader of a column, "handle" the call for the database, "result" a
// query that succeeds without one. Of several lines that name a call the first counts. Without outputs any
// will do.
struct Consequence {
  const char* call;
  int64_t status;
  const char* outputs = nullptr;
};

// What queries of a table find instead of the example rows, those whose filter contains a text.
struct Replacement {
  const char* table;
  const char* filter;
  std::vector<ExampleRow> rows;
};

struct Scenario {
  const char* operation;
  const char* situation;  // what is special, in words for the test's name
  std::vector<Replacement> replacements;
  Outcome success;
  std::vector<Consequence> consequences;
};
const std::vector<Scenario>& scenarios();

// The status that failing calls answer.
constexpr int kFailure = 77;

}  // namespace faults

#endif
