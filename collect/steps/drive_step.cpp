#include "collect/steps/drive_step.h"

#include <algorithm>
#include <optional>
#include <string>

#include "collect/rows/drive_rows.h"
#include "collect/sources/sysfs/sysfs_drives.h"
#include "collect/write/nvme_drives.h"

namespace zymdb::collect {
namespace {

using Drives = std::optional<std::vector<Drive>>;

bool has_nvme_function(const Machine& machine) {
  return std::ranges::any_of(*machine.functions,
                             [](const MachineFunction& function) { return function.pci.is_nvme(); });
}

Drives find_nvme_drives(const Survey& survey) {
  Drives drives = read_nvme_drives(survey.sysfs(), survey.drivers().health);
  const bool is_told = !has_nvme_function(survey.machine()) ||
                       survey.is_told(drives, "NVMe drives in " + survey.sysfs() + "/class/nvme");
  return is_told ? drives : std::nullopt;
}

Drives find_disks(const Survey& survey) {
  Drives disks = read_disks(survey.sysfs());
  const bool is_told =
      has_block_devices(survey.sysfs()) || survey.is_told(disks, "disks in " + survey.sysfs() + "/block");
  return is_told ? disks : std::nullopt;
}

std::optional<std::vector<NvmeRecord>> make_records(const Survey& survey, const Drives& drives) {
  if (!drives) return std::nullopt;
  std::vector<std::string> notices;
  auto records = nvme_records(survey.machine(), *drives, notices);
  for (const auto& notice : notices) survey.note(notice);
  return records;
}

}  // namespace

RowMaker collect_drives(const Survey& survey) {
  if (!survey.machine().functions || survey.sysfs().empty()) return {};
  const auto disks = find_disks(survey);
  const auto nvme = make_records(survey, find_nvme_drives(survey));
  if (!disks && !nvme) return {};
  auto content = disk_rows(survey.machine(), disks, nvme.value_or(std::vector<NvmeRecord>{}));
  if (nvme)
    content.write_further = [records = *nvme](TableSummary& summary) { write_nvme_drives(records, summary); };
  return always(std::move(content));
}

}  // namespace zymdb::collect
