#include "collect/record/record_machine.h"

#include <filesystem>
#include <map>
#include <system_error>

#include "collect/record/machine_copy.h"
#include "collect/record/sanitizer.h"
#include "collect/sources/sysfs/machine_folders.h"
#include "collect/steps/classes.h"
#include "common/output_file.h"
#include "common/source_access.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

void require(const std::error_code& error, const fs::path& path) {
  if (error) throw SourceError(path.string(), error.message());
}

void write_copy(const MachineCopy& copy, const fs::path& place_of_copy) {
  NewFolder folder(place_of_copy);
  for (const auto& place : copy.folders) folder.add_folder(place);
  for (const auto& [place, content] : copy.files) folder.add_file(place, content);
  for (const auto& [place, target] : copy.links) folder.add_link(place, target);
  folder.finish();
}

// One line for each kind of file.
void note_forbidden(const MachineCopy& copy, const Observer& observer) {
  std::map<std::string, std::pair<size_t, std::string>> kinds;
  for (const auto& path : copy.forbidden) {
    auto& [count, example] = kinds[fs::path(path).filename().string()];
    if (count++ == 0) example = fs::path(path).lexically_normal().string();
  }
  for (const auto& [name, kind] : kinds) {
    const auto& [count, example] = kind;
    const std::string others = count == 1 ? "" : " and " + std::to_string(count - 1) + " more of that name";
    if (observer.notice) observer.notice("not recorded, since it may not be read: " + example + others);
  }
}

// A recording wants to know of sources that do not answer, not of those that a collection could do without.
Observer only_silence(const Observer& observer) {
  return {.notice = {}, .progress = {}, .silence = observer.notice};
}

MachineCopy copy_machine(const fs::path& root, unsigned timeout, const Observer& observer) {
  CopyMaker maker(root);
  const Observation observation(maker);
  const TimeBound bound{std::chrono::seconds(timeout)};
  Sources sources{.sysfs = root.string()};
  sources.allow_empty = true;
  const Observer silence = only_silence(observer);
  const Survey survey(sources, silence, true);
  read_sources(steps_of({}), survey);
  return maker.copy();
}

}  // namespace

size_t record_machine(const Recording& recording, const Observer& observer) {
  require_new_or_empty(recording.folder);
  std::error_code error;
  const fs::path named = recording.sysfs.empty() ? kRunningMachine : recording.sysfs;
  const fs::path root = fs::canonical(named, error);
  require(error, named);
  auto copy = copy_machine(root, recording.timeout, observer);
  if (recording.is_sanitized) copy = sanitized(copy);
  copy.folders.insert("sys");
  write_copy(copy, recording.folder);
  note_forbidden(copy, observer);
  return copy.files.size();
}

}  // namespace zymdb::collect
