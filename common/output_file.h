// Files and folders that come to be whole, or not at all.
#ifndef ZYMDB_COMMON_OUTPUT_FILE_H
#define ZYMDB_COMMON_OUTPUT_FILE_H

#include <filesystem>
#include <string>
#include <string_view>

namespace zymdb {

// A new file, which others may not read. Throws SourceError when there is one of that name, or it cannot be
// written.
void write_new_file(const std::string& path, std::string_view content);

// A file in the place of whatever file is there: who reads it finds the former one or this one. It may be
// read by all whom the process's umask lets. What is no file (a pipe, a device) is written into. Throws
// SourceError when it cannot be written; then the former file is as it was.
void replace_file(const std::string& path, std::string_view content);

// Throws SourceError for what is there and no empty folder.
void require_new_or_empty(const std::filesystem::path& folder);

// A folder that is filled beside its place, and vanishes unless it is finished.
class NewFolder {
 public:
  // Throws SourceError, as everything below, with the place in the folder for the source: for one that is not
  // new or empty, or cannot be made.
  explicit NewFolder(const std::filesystem::path& folder);
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;

  // Each with the folders above it.
  void add_folder(const std::filesystem::path& place) const;
  void add_file(const std::filesystem::path& place, std::string_view content) const;
  void add_link(const std::filesystem::path& place, const std::string& target) const;

  // All of it is on the disk, and in its place.
  void finish();

 private:
  std::filesystem::path folder_;
  std::filesystem::path draft_;
};

}  // namespace zymdb

#endif
