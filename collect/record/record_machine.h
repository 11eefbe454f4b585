// Records a machine: everything that a collection reads of it, as files that a collection reads back.
#ifndef ZYMDB_COLLECT_RECORD_RECORD_MACHINE_H
#define ZYMDB_COLLECT_RECORD_RECORD_MACHINE_H

#include <cstddef>
#include <string>

#include "collect/rows/report.h"

namespace zymdb::collect {

struct Recording {
  std::string folder;      // is made, or is empty
  std::string sysfs = {};  // of a recorded machine; empty: the running one
  bool is_sanitized = false;
  unsigned timeout = 5;  // seconds that a question to the machine may take
};

// Writes the folder: "sys" is what `collect --sysfs` is to be given. What only root may read is a notice, and
// so is what does not answer. Nothing is left of a recording that fails. Answers the number of files; throws
// SourceError.
size_t record_machine(const Recording& recording, const Observer& observer);

}  // namespace zymdb::collect

#endif
