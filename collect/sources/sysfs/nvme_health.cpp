#include "collect/sources/sysfs/nvme_health.h"

#include <fcntl.h>
#include <libnvme.h>
#include <unistd.h>

#include <algorithm>

namespace zymdb::collect {
namespace {

constexpr int kZeroCelsius = 273;  // kelvin

class Device {
 public:
  explicit Device(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Device() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

uint8_t to_celsius(int kelvin) {
  return static_cast<uint8_t>(std::clamp(kelvin - kZeroCelsius, 0, 255));
}

// The low 64 of its 128 bits; nothing when the drive does not tell.
std::optional<uint64_t> total_capacity(const nvme_id_ctrl& identity) {
  uint64_t bytes = 0;
  for (int i = 7; i >= 0; --i) bytes = bytes << 8 | identity.tnvmcap[i];
  return bytes != 0 ? std::optional(bytes) : std::nullopt;
}

}  // namespace

std::optional<DriveHealth> read_nvme_health(const std::string& name) {
  const Device device("/dev/" + name);
  if (device.descriptor() < 0) return std::nullopt;
  nvme_smart_log log{};
  if (nvme_get_log_smart(device.descriptor(), NVME_NSID_ALL, false, &log) != 0) return std::nullopt;
  DriveHealth health;
  health.warning = log.critical_warning;
  health.temperature = to_celsius(log.temperature[0] | log.temperature[1] << 8);
  health.remaining_life = static_cast<uint8_t>(100 - std::min<int>(log.percent_used, 100));
  nvme_id_ctrl identity{};
  if (nvme_identify_ctrl(device.descriptor(), &identity) == 0) health.capacity = total_capacity(identity);
  return health;
}

}  // namespace zymdb::collect
