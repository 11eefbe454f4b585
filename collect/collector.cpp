#include "collect/collector.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "collect/sources/sysfs/machine_folders.h"
#include "collect/steps/drive_step.h"
#include "collect/steps/firmware_step.h"
#include "collect/steps/pci_steps.h"
#include "collect/steps/port_step.h"
#include "collect/steps/smbios_steps.h"
#include "collect/write/collection_stamp.h"
#include "collect/write/former_machine.h"
#include "collect/write/inventory_writer.h"
#include "common/client_objects.h"
#include "common/source_file.h"
#include "common/transaction.h"

namespace zymdb::collect {
namespace {

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const auto& word : words) {
    if (!word.empty()) text += (text.empty() ? "" : ", ") + word;
  }
  return text;
}

struct NamedStep {
  std::string_view of_class;
  bool wants_functions;  // of the PCI bus
  Step step;
};

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
    {"drives", true, collect_drives},
};

// All of them where none is named.
std::vector<NamedStep> steps_of(const std::vector<std::string>& classes) {
  const auto known = class_names();
  for (const auto& name : classes) {
    if (std::ranges::find(known, name) == known.end())
      throw SourceError("'" + name + "' is none of " + joined(known));
  }
  std::vector<NamedStep> steps;
  std::ranges::copy_if(kSteps, std::back_inserter(steps), [&](const NamedStep& step) {
    return classes.empty() || std::ranges::find(classes, step.of_class) != classes.end();
  });
  return steps;
}

std::vector<RowMaker> read_sources(const std::vector<NamedStep>& steps, const Survey& survey) {
  std::vector<RowMaker> makers;
  for (const auto& each : steps) {
    if (auto maker = each.step(survey)) makers.push_back(std::move(maker));
  }
  return makers;
}

std::vector<TableContent> make_rows(const std::vector<RowMaker>& makers, _zym_db_handle_t* handle) {
  std::vector<TableContent> tables;
  for (const auto& make : makers) std::ranges::move(make(handle), std::back_inserter(tables));
  return tables;
}

std::string name_of(const Sources& sources) {
  const auto named = joined({sources.lspci, sources.smbios, sources.sysfs});
  const auto only = sources.only.empty() ? "" : " (only " + joined(sources.only) + ")";
  return (named.empty() ? kRunningMachine : named) + only;
}

std::vector<TableSummary> collect(const Sources& sources, const Observer& observer) {
  const auto steps = steps_of(sources.only);
  const Survey survey(sources, observer, std::ranges::any_of(steps, &NamedStep::wants_functions));
  const auto makers = read_sources(steps, survey);
  _zym_db_handle_t* handle = get_dmdb_handle();
  if (handle == nullptr) throw DatabaseError("the inventory cannot be opened");
  Transaction transaction(handle);
  make_room_for(survey.system(), sources.replace, handle);
  auto summaries = write_inventory(handle, make_rows(makers, handle), observer);
  if (std::ranges::any_of(summaries, &TableSummary::changed)) stamp_collection(handle, name_of(sources));
  transaction.commit();
  return summaries;
}

}  // namespace

std::vector<std::string> class_names() {
  std::vector<std::string> names;
  for (const auto& step : kSteps) {
    if (std::ranges::find(names, step.of_class) == names.end()) names.emplace_back(step.of_class);
  }
  return names;
}

Summary collect_inventory(const Sources& sources, const Observer& observer) {
  Summary summary;
  try {
    summary.tables = collect(sources, observer);
  } catch (const SourceError& error) {
    summary.error = error.what();
  } catch (const DatabaseError& error) {
    summary.error = error.what();
  }
  return summary;
}

}  // namespace zymdb::collect
