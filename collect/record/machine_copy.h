// A machine as files: what the collector reads of it, and how its folders and links lead there.
#ifndef ZYMDB_COLLECT_RECORD_MACHINE_COPY_H
#define ZYMDB_COLLECT_RECORD_MACHINE_COPY_H

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/source_access.h"

namespace zymdb::collect {

// Paths are relative to the copy, in which the sysfs tree is "sys" and what lies beside it ("proc", "etc",
// "driver-answers") has the name that it has there.
struct MachineCopy {
  std::map<std::string, std::string> files;
  std::map<std::string, std::string> links;  // and where they lead, relative to their folder
  std::set<std::string> folders;
  std::vector<std::string> forbidden;  // files that may not be read
};

// Makes a copy of what it observes.
class CopyMaker : public AccessObserver {
 public:
  // `root` is the sysfs tree's, without links.
  explicit CopyMaker(std::filesystem::path root) : root_(std::move(root)) {}

  const MachineCopy& copy() const { return copy_; }

  void read_file(const std::string& path, const std::optional<std::string>& content, int error) override;
  void listed(const std::filesystem::path& folder,
              const std::vector<std::filesystem::path>& entries) override;
  void looked_at(const std::filesystem::path& path) override;

 private:
  std::optional<std::string> place_of(const std::filesystem::path& path) const;
  std::optional<std::filesystem::path> follow(const std::filesystem::path& path, unsigned links);
  std::optional<std::filesystem::path> follow_link(const std::filesystem::path& link, unsigned links);
  std::optional<std::string> place_behind_links(const std::filesystem::path& path);
  void add_what_is_at(const std::filesystem::path& path, bool with_files);

  const std::filesystem::path root_;
  MachineCopy copy_;
};

}  // namespace zymdb::collect

#endif
