#include "collect/collector.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>

#include "collect/sources/sysfs/machine_folders.h"
#include "collect/steps/classes.h"
#include "collect/write/collection_stamp.h"
#include "collect/write/former_machine.h"
#include "collect/write/inventory_owner.h"
#include "collect/write/inventory_writer.h"
#include "common/client_objects.h"
#include "common/source_access.h"
#include "common/source_file.h"
#include "common/text.h"
#include "common/transaction.h"

namespace zymdb::collect {
namespace {

std::vector<TableContent> make_rows(const std::vector<RowMaker>& makers, const FormerMachine& former) {
  std::vector<TableContent> tables;
  for (const auto& make : makers) std::ranges::move(make(former), std::back_inserter(tables));
  for (auto& content : tables) {
    for (const FunctionKey function : former.replaced) content.replaced.add(function);
  }
  return tables;
}

std::vector<std::function<void()>> functions_once_stored(const std::vector<TableContent>& tables) {
  std::vector<std::function<void()>> functions;
  for (const auto& content : tables) {
    if (content.once_stored) functions.push_back(content.once_stored);
  }
  return functions;
}

std::string name_of(const Sources& sources) {
  const auto named = listed({sources.lspci, sources.smbios, sources.sysfs});
  const auto only = sources.only.empty() ? "" : " (only " + listed(sources.only) + ")";
  return (named.empty() ? kRunningMachine : named) + only;
}

std::vector<TableSummary> collect(const Sources& sources, const Observer& observer) {
  const TimeBound bound(std::chrono::seconds(sources.timeout));
  const auto steps = steps_of(sources.only);
  auto survey = std::make_unique<const Survey>(sources, observer, want_functions(steps));
  auto makers = read_sources(steps, *survey);
  _zym_db_handle_t* handle = get_dmdb_handle();
  if (handle == nullptr) throw DatabaseError("the inventory cannot be opened");
  Transaction transaction(handle);
  make_room_for(survey->system(), sources.replace, handle);
  auto tables = make_rows(makers, read_former_machine(handle, survey->machine()));
  // A large machine is not held three times: as it was read, as rows, and as the inventory has it.
  makers.clear();
  survey.reset();
  auto stored = functions_once_stored(tables);
  auto summaries = write_inventory(handle, std::move(tables), observer);
  if (std::ranges::any_of(summaries, &TableSummary::changed)) stamp_collection(handle, name_of(sources));
  transaction.commit();
  for (const auto& call : stored) call();
  return summaries;
}

}  // namespace

std::vector<std::string> class_names() {
  return names_of_classes();
}

// A collection that has to be made again reads the machine anew, for its sources are let go before its rows
// are written; what they lack was told.
Summary collect_inventory(const Sources& sources, const Observer& observer) {
  Summary summary;
  Observer told = observer;
  try {
    repeat_overtaken([&] {
      const Observer now = std::exchange(told, {.notice = {}, .progress = observer.progress});
      summary.tables = collect(sources, now);
    });
  } catch (const SourceError& error) {
    summary.error = error.what();
  } catch (const DatabaseError& error) {
    summary.error = error.what();
  }
  return summary;
}

}  // namespace zymdb::collect
