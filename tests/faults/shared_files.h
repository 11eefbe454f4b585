// Files of which the machine has but one, for the operations that look for them.
#ifndef ZYMDB_TESTS_FAULTS_SHARED_FILES_H
#define ZYMDB_TESTS_FAULTS_SHARED_FILES_H

#include <optional>
#include <string_view>

#include "support/parsing_marker.h"
#include "support/turn.h"

namespace faults {

// Keeps other programs' tests from them meanwhile: there is no retimer service, and nothing is being parsed.
class SharedFiles {
 public:
  explicit SharedFiles(std::string_view operation) {
    if (operation.starts_with("retimer_")) retimers_.emplace("/tmp/zymdb-test-retimer.lock");
    if (operation.find("_config") != operation.npos) marker_.emplace();
  }

 private:
  std::optional<Turn> retimers_;
  std::optional<ParsingMarker> marker_;
};

}  // namespace faults

#endif
