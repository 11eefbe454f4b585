// A folder that vanishes with the object.
#ifndef ZYMDB_TESTS_SUPPORT_TEMPORARY_FOLDER_H
#define ZYMDB_TESTS_SUPPORT_TEMPORARY_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::filesystem::path& place = std::filesystem::temp_directory_path()) {
    std::string name = place / "zymdb-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder in " + place.string());
    path_ = name;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(std::string_view name) const { return path_ / name; }

  // Writes a file below the folder, with the folders on its way; gives its path.
  std::string write(std::string_view name, std::string_view content) const {
    const std::filesystem::path path = path_ / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

 private:
  std::filesystem::path path_;
};

#endif
