#include "collect/sources/sysfs/machine_folders.h"

#include <filesystem>
#include <system_error>

namespace zymdb::collect {

std::string folder_beside(const std::string& root, const std::string& name) {
  namespace fs = std::filesystem;
  const fs::path folder = fs::path(root) / ".." / name;
  std::error_code error;
  const bool is_running = fs::equivalent(folder, fs::path("/") / name, error);
  return is_running && root != kRunningMachine ? "" : folder.string();
}

}  // namespace zymdb::collect
