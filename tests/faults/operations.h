// Every exported operation, called once with arguments that fit the example rows.
#ifndef ZYMDB_TESTS_FAULTS_OPERATIONS_H
#define ZYMDB_TESTS_FAULTS_OPERATIONS_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace faults {

// What a caller sees of a call.
struct Outcome {
  int64_t status;  // or whatever the operation returns
  // Of a list: "none", "empty array", "2 listed", "untouched", "count 0" when nothing but the count was
  // written. Of anything else: "written", "untouched". Empty for operations without outputs.
  std::string outputs{};

  bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

struct Operation {
  const char* name;
  Outcome (*call)();
};
const std::vector<Operation>& operations();
const Operation& operation(const std::string& name);

}  // namespace faults

#endif
