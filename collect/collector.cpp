#include "collect/collector.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "collect/steps/drive_step.h"
#include "collect/steps/firmware_step.h"
#include "collect/steps/pci_steps.h"
#include "collect/steps/port_step.h"
#include "collect/steps/smbios_steps.h"
#include "collect/write/former_machine.h"
#include "collect/write/inventory_writer.h"
#include "common/client_objects.h"
#include "common/source_file.h"
#include "common/transaction.h"

namespace zymdb::collect {
namespace {

// In the order of writing.
constexpr Step kSteps[] = {
    collect_system,   collect_processors,         collect_memory, collect_system_firmware, collect_functions,
    collect_adapters, collect_vital_product_data, collect_gpus,   collect_ports,           collect_firmware,
    collect_drives,
};

std::vector<RowMaker> read_sources(const Survey& survey) {
  std::vector<RowMaker> makers;
  for (const Step step : kSteps) {
    if (auto maker = step(survey)) makers.push_back(std::move(maker));
  }
  return makers;
}

std::vector<TableContent> make_rows(const std::vector<RowMaker>& makers, const FormerMachine& former) {
  std::vector<TableContent> tables;
  for (const auto& make : makers) std::ranges::move(make(former), std::back_inserter(tables));
  for (auto& content : tables) {
    for (const FunctionKey function : former.replaced) content.replaced.add(function);
  }
  return tables;
}

std::vector<TableSummary> collect(const Sources& sources, const Observer& observer) {
  auto survey = std::make_unique<const Survey>(sources, observer);
  auto makers = read_sources(*survey);
  _zym_db_handle_t* handle = get_dmdb_handle();
  if (handle == nullptr) throw DatabaseError("the inventory cannot be opened");
  Transaction transaction(handle);
  auto tables = make_rows(makers, read_former_machine(handle, survey->machine()));
  // A large machine is not held three times: as it was read, as rows, and as the inventory has it.
  makers.clear();
  survey.reset();
  auto summaries = write_inventory(handle, std::move(tables), observer);
  transaction.commit();
  return summaries;
}

}  // namespace

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
