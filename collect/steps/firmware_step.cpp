#include "collect/steps/firmware_step.h"

#include <vector>

#include "collect/rows/firmware_rows.h"
#include "collect/sources/sysfs/sysfs_firmware.h"

namespace zymdb::collect {
namespace {

std::vector<FirmwareComponent> find_components(const Survey& survey) {
  if (survey.sysfs().empty()) return {};
  const FirmwareDrivers drivers{survey.drivers().firmware_version, survey.drivers().nvidia_folder};
  return read_sysfs_firmware(survey.sysfs(), drivers);
}

}  // namespace

RowMaker collect_firmware(const Survey& survey) {
  if (!survey.machine().functions) return {};
  const auto components = find_components(survey);
  for (const auto& component : components) {
    if (component.silence)
      survey.note_silent(*component.silence, "the firmware of " + to_string(component.function));
  }
  ToldBy told_by = survey.drivers().are_told ? ToldBy::kDrivers : ToldBy::kSysfs;
  const bool is_believed = survey.allows_empty() && !survey.sysfs().empty();
  if (components.empty() && !is_believed) told_by = ToldBy::kNobody;
  auto content = firmware_rows(survey.machine(), components, survey.names(), told_by);
  content.is_told = !survey.sysfs().empty();
  return always(std::move(content));
}

}  // namespace zymdb::collect
