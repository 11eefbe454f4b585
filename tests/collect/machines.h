// Machines to test with: the example server always, and the recorded ones below $ZYMDB_RECORDED_MACHINES
// (folders pci, dmi, sysfs). A small table language for what the outside tools print.
#ifndef ZYMDB_TESTS_COLLECT_MACHINES_H
#define ZYMDB_TESTS_COLLECT_MACHINES_H

#include <string>
#include <string_view>
#include <vector>

#include "support/temporary_folder.h"

namespace zymdb::collect {

// A name that a test parameter may bear, and a file.
struct RecordedFile {
  std::string name;
  std::string path;
};

std::ostream& operator<<(std::ostream& out, const RecordedFile& file);

std::vector<RecordedFile> recorded_lspci_dumps();
std::vector<RecordedFile> recorded_smbios_dumps();
std::vector<RecordedFile> recorded_sysfs_archives();  // the recorded ones only

inline std::string name_of(const RecordedFile& file) {
  return file.name;
}

std::string read_file(const std::string& path);

// What a command line prints on its standard output; fails the test when the command fails.
std::string output_of(const std::string& command);

std::vector<std::string> lines_of(std::string_view text);

}  // namespace zymdb::collect

#endif
