#include "collect/steps/drive_step.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

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
  for (const auto& drive : drives.value_or(std::vector<Drive>{})) {
    if (drive.silence) survey.note_silent(*drive.silence, "the drive " + drive.name);
  }
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

DriveFindings find_drives(const Survey& survey) {
  if (survey.sysfs().empty()) return {};
  auto disks = find_disks(survey);
  return {.nvme = find_nvme_drives(survey), .disks = std::move(disks)};
}

// Functions of the machine whose device is the one that the inventory has there.
std::set<FunctionKey> remaining_functions(const Machine& machine, const FormerMachine& former) {
  std::set<FunctionKey> functions;
  for (const auto& function : *machine.functions) {
    if (!former.replaced.contains(function.key)) functions.insert(function.key);
  }
  return functions;
}

std::vector<TableContent> make_tables(const Survey& survey, const DriveFindings& found,
                                      const FormerMachine& former) {
  auto [nvme, content, silent, notices] = drive_rows(survey.machine(), found, read_former_drives(former));
  for (const auto& notice : notices) survey.note(notice);
  if (found.nvme) {
    content.write_further = [nvme = std::move(nvme), silent = std::move(silent)](TableSummary& summary) {
      write_nvme_drives(nvme, silent, summary);
    };
  } else {
    content.write_further = [there = remaining_functions(survey.machine(), former)](TableSummary& summary) {
      mark_drives_of_gone_functions(there, summary);
    };
  }
  content.is_told = found.nvme || found.disks;
  return {std::move(content)};
}

}  // namespace

RowMaker collect_drives(const Survey& survey) {
  if (!survey.machine().functions) return {};
  return [&survey, found = find_drives(survey)](const FormerMachine& former) {
    return make_tables(survey, found, former);
  };
}

}  // namespace zymdb::collect
