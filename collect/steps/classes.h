// The classes of hardware, and what is read of each.
#ifndef ZYMDB_COLLECT_STEPS_CLASSES_H
#define ZYMDB_COLLECT_STEPS_CLASSES_H

#include <string>
#include <string_view>
#include <vector>

#include "collect/steps/step.h"

namespace zymdb::collect {

struct NamedStep {
  std::string_view of_class;
  bool wants_functions;  // of the PCI bus
  Step step;
  bool wants_places = false;  // which SMBIOS tells
};

std::vector<std::string> names_of_classes();

// The steps of these classes, of all where none is named, in the order of writing. Throws SourceError for a
// name of none.
std::vector<NamedStep> steps_of(const std::vector<std::string>& classes);

bool want_functions(const std::vector<NamedStep>& steps);

// Reads what the steps need. A class whose source does not answer in time is left as it is, with a notice.
std::vector<RowMaker> read_sources(const std::vector<NamedStep>& steps, const Survey& survey);

}  // namespace zymdb::collect

#endif
