#include "collect/steps/classes.h"

#include <algorithm>
#include <iterator>

#include "collect/steps/drive_step.h"
#include "collect/steps/firmware_step.h"
#include "collect/steps/pci_steps.h"
#include "collect/steps/port_step.h"
#include "collect/steps/smbios_steps.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"

namespace zymdb::collect {
namespace {

// In the order of writing.
constexpr NamedStep kSteps[] = {
    {"system", false, collect_system},
    {"processors", false, collect_processors},
    {"memory", false, collect_memory},
    {"firmware", false, collect_system_firmware},
    {"pci", true, collect_functions},
    {"pci", true, collect_adapters},
    {"pci", true, collect_vital_product_data},
    {"gpus", true, collect_gpus},
    {"ports", true, collect_ports},
    {"firmware", true, collect_firmware},
    {"drives", true, collect_drives, true},
};

}  // namespace

std::vector<std::string> names_of_classes() {
  std::vector<std::string> names;
  for (const auto& step : kSteps) {
    if (std::ranges::find(names, step.of_class) == names.end()) names.emplace_back(step.of_class);
  }
  return names;
}

std::vector<NamedStep> steps_of(const std::vector<std::string>& classes) {
  const auto known = names_of_classes();
  for (const auto& name : classes) {
    if (std::ranges::find(known, name) == known.end())
      throw SourceError("'" + name + "' is none of " + listed(known));
  }
  std::vector<NamedStep> steps;
  std::ranges::copy_if(kSteps, std::back_inserter(steps), [&](const NamedStep& step) {
    return classes.empty() || std::ranges::find(classes, step.of_class) != classes.end();
  });
  return steps;
}

bool want_functions(const std::vector<NamedStep>& steps) {
  return std::ranges::any_of(steps, &NamedStep::wants_functions);
}

std::vector<RowMaker> read_sources(const std::vector<NamedStep>& steps, const Survey& survey) {
  std::vector<RowMaker> makers;
  for (const auto& each : steps) {
    if (each.wants_places && survey.smbios_is_silent()) continue;
    try {
      if (auto maker = each.step(survey)) makers.push_back(std::move(maker));
    } catch (const NoAnswer& problem) {
      survey.note_silent(problem.what(), "class " + std::string(each.of_class));
    }
  }
  return makers;
}

}  // namespace zymdb::collect
