// What is recorded of a machine beside its sysfs tree.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_MACHINE_FOLDERS_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_MACHINE_FOLDERS_H

#include <string>

namespace zymdb::collect {

// The running machine's sysfs tree.
inline constexpr char kRunningMachine[] = "/sys";

// The folder `name` ("proc", "etc") of the machine whose sysfs tree is `root`: it lies beside that. Empty
// where it would be the running machine's and the tree is not.
std::string folder_beside(const std::string& root, const std::string& name);

}  // namespace zymdb::collect

#endif
