#include "collect/steps/firmware_step.h"

#include "collect/rows/firmware_rows.h"
#include "collect/sources/sysfs/sysfs_firmware.h"

namespace zymdb::collect {
RowMaker collect_firmware(const Survey& survey) {
  if (!survey.machine().functions || survey.sysfs().empty()) return {};
  const FirmwareDrivers drivers{survey.drivers().firmware_version, survey.drivers().nvidia_folder};
  const auto components = read_sysfs_firmware(survey.sysfs(), drivers);
  ToldBy told_by = survey.drivers().are_told ? ToldBy::kDrivers : ToldBy::kSysfs;
  if (components.empty() && !survey.allows_empty()) told_by = ToldBy::kNobody;
  return always(firmware_rows(survey.machine(), components, survey.names(), told_by));
}

}  // namespace zymdb::collect
