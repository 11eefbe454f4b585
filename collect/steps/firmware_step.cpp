#include "collect/steps/firmware_step.h"

#include "collect/rows/firmware_rows.h"
#include "collect/sources/sysfs/ethtool.h"
#include "collect/sources/sysfs/sysfs_firmware.h"

namespace zymdb::collect {
namespace {

constexpr char kNvidiaFolder[] = "/proc/driver/nvidia/gpus";

}  // namespace

RowMaker collect_firmware(const Survey& survey) {
  if (!survey.machine().functions || survey.sysfs().empty()) return {};
  const FirmwareDrivers drivers =
      survey.is_running() ? FirmwareDrivers{read_firmware_version, kNvidiaFolder} : FirmwareDrivers{};
  const auto components = read_sysfs_firmware(survey.sysfs(), drivers);
  ToldBy told_by = survey.is_running() ? ToldBy::kDrivers : ToldBy::kSysfs;
  if (components.empty() && !survey.allows_empty()) told_by = ToldBy::kNobody;
  return always(firmware_rows(survey.machine(), components, survey.names(), told_by));
}

}  // namespace zymdb::collect
