// For builds without libnvme: no drive tells of itself.
#include "collect/sources/sysfs/nvme_health.h"

namespace zymdb::collect {

std::optional<DriveHealth> read_nvme_health(const std::string&) {
  return std::nullopt;
}

}  // namespace zymdb::collect
