// What drivers tell beyond their files: the running machine's are asked, those of a recorded machine have
// answered.
#ifndef ZYMDB_COLLECT_SOURCES_SYSFS_DRIVERS_H
#define ZYMDB_COLLECT_SOURCES_SYSFS_DRIVERS_H

#include <functional>
#include <optional>
#include <string>

#include "collect/sources/sysfs/drive.h"
#include "collect/sources/sysfs/ethtool.h"

namespace zymdb::collect {

// Whom to ask; each is empty where nobody can be asked.
struct Drivers {
  bool are_told = false;  // whether they can be asked at all
  EthtoolReader ethtool = {};
  std::function<std::optional<std::string>(const std::string& interface)> firmware_version = {};
  HealthReader health = {};
  std::string nvidia_folder = {};  // a folder per card with its "information"
};

// The drivers of the machine whose sysfs tree is `root`. A recorded machine has their answers in the folder
// "driver-answers" beside it: a file for each device, with a line for each thing told.
Drivers drivers_of(const std::string& root);

}  // namespace zymdb::collect

#endif
