#include "collect/record/record_machine.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <system_error>

#include "collect/record/machine_copy.h"
#include "collect/record/sanitizer.h"
#include "collect/sources/sysfs/machine_folders.h"
#include "collect/steps/classes.h"
#include "common/source_access.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

void require(const std::error_code& error, const fs::path& path) {
  if (error) throw SourceError(path.string(), error.message());
}

// "copy/" is the folder "copy".
fs::path without_end(const fs::path& folder) {
  return folder.has_filename() ? folder : folder.parent_path();
}

void require_new_or_empty(const fs::path& folder) {
  std::error_code error;
  if (!fs::exists(folder, error)) return;
  const bool is_empty = fs::is_directory(folder, error) && fs::is_empty(folder, error);
  require(error, folder);
  if (!is_empty) throw SourceError(folder.string(), "is not an empty folder");
}

// A folder beside the one wanted, which vanishes unless it becomes that.
class Draft {
 public:
  explicit Draft(const fs::path& folder) : folder_(folder) {
    std::string name = folder.string() + ".XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
      throw SourceError(folder.string(), std::generic_category().message(errno));
    draft_ = name;
  }
  ~Draft() {
    std::error_code ignored;
    if (!draft_.empty()) fs::remove_all(draft_, ignored);
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  void add_folder(const std::string& place) const {
    std::error_code error;
    fs::create_directories(draft_ / place, error);
    require(error, folder_ / place);
  }

  void add_file(const std::string& place, const std::string& content) const {
    add_folder(fs::path(place).parent_path().string());
    std::ofstream file(draft_ / place, std::ios::binary);
    file << content;
    file.close();
    if (!file) throw SourceError((folder_ / place).string(), "cannot be written");
  }

  void add_link(const std::string& place, const std::string& target) const {
    add_folder(fs::path(place).parent_path().string());
    std::error_code error;
    fs::create_symlink(target, draft_ / place, error);
    require(error, folder_ / place);
  }

  void finish() {
    std::error_code error;
    fs::rename(draft_, folder_, error);
    require(error, folder_);
    draft_.clear();
  }

 private:
  fs::path folder_;
  fs::path draft_;
};

void write_copy(const MachineCopy& copy, const fs::path& folder) {
  Draft draft(folder);
  for (const auto& place : copy.folders) draft.add_folder(place);
  for (const auto& [place, content] : copy.files) draft.add_file(place, content);
  for (const auto& [place, target] : copy.links) draft.add_link(place, target);
  draft.finish();
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
  write_copy(copy, without_end(fs::absolute(recording.folder).lexically_normal()));
  note_forbidden(copy, observer);
  return copy.files.size();
}

}  // namespace zymdb::collect
