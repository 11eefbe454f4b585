#include "collect/machines.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

std::string test_name(const fs::path& path) {
  std::string name = path.filename().string();
  std::ranges::replace_if(
      name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
  return name;
}

void add_folder(std::vector<RecordedFile>& files, const char* folder, std::string_view part_of_name) {
  const char* root = std::getenv("ZYMDB_RECORDED_MACHINES");
  if (root == nullptr) return;
  for (const auto& entry : fs::directory_iterator(fs::path(root) / folder)) {
    const bool wanted = entry.path().filename().string().find(part_of_name) != std::string::npos;
    if (entry.is_regular_file() && wanted) files.push_back({test_name(entry.path()), entry.path().string()});
  }
  std::ranges::sort(files, {}, &RecordedFile::name);
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const RecordedFile& file) {
  return out << file.path;
}

std::vector<RecordedFile> recorded_lspci_dumps() {
  std::vector<RecordedFile> files{{"example_server", ZYMDB_EXAMPLE_SERVER "/server.lspci"}};
  add_folder(files, "pci", ".lspci");
  return files;
}

std::vector<RecordedFile> recorded_smbios_dumps() {
  std::vector<RecordedFile> files{{"example_server", ZYMDB_EXAMPLE_SERVER "/server.smbios"}};
  add_folder(files, "dmi", ".bin");
  return files;
}

std::vector<RecordedFile> recorded_sysfs_archives() {
  std::vector<RecordedFile> files;
  add_folder(files, "sysfs", ".tar");
  return files;
}

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

std::string output_of(const std::string& command) {
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "re"), nullptr);
  std::string output;
  std::array<char, 4096> block;
  for (size_t count; (count = fread(block.data(), 1, block.size(), pipe.get())) > 0;) {
    output.append(block.data(), count);
  }
  EXPECT_EQ(WEXITSTATUS(pclose(pipe.release())), 0) << command;
  return output;
}

std::vector<std::string> lines_of(std::string_view text) {
  std::vector<std::string> lines;
  std::istringstream stream{std::string(text)};
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

}  // namespace zymdb::collect
