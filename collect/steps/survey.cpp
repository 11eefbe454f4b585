#include "collect/steps/survey.h"

#include <map>
#include <utility>

#include "collect/sources/pci/lspci_dump.h"
#include "collect/sources/smbios/smbios.h"
#include "collect/sources/sysfs/machine_folders.h"
#include "collect/sources/sysfs/sysfs_pci.h"
#include "collect/sources/sysfs/sysfs_system.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

constexpr char kSmbiosFolder[] = "/firmware/dmi/tables";
constexpr char kToldByThemOnly[] = "what only they tell is left as it is";
constexpr char kToldBySmbios[] = "processors, memory and places of devices are left as they are";

bool names_nothing(const Sources& sources) {
  return sources.lspci.empty() && sources.smbios.empty() && sources.sysfs.empty();
}

template <class T>
void take_known(const std::optional<T>& from, std::optional<T>& to) {
  if (from) to = from;
}

void add_what_a_dump_lacks(const PciFunction& from, PciFunction& function) {
  if (from.vendor != function.vendor || from.device != function.device) return;
  take_known(from.link.width, function.link.width);
  take_known(from.link.generation, function.link.generation);
  take_known(from.link.max_width, function.link.max_width);
  take_known(from.link.max_generation, function.link.max_generation);
  take_known(from.parent, function.parent);
  take_known(from.numa_node, function.numa_node);
  take_known(from.video_memory, function.video_memory);
  function.is_told_by_system = true;
  take_known(from.driver, function.driver);
  take_known(from.iommu_group, function.iommu_group);
  take_known(from.vpd, function.vpd);
}

}  // namespace

Survey::Survey(const Sources& sources, const Observer& observer, bool wants_functions)
    : sources_(sources), observer_(observer) {
  if (names_nothing(sources)) sources_.sysfs = kRunningMachine;
  drivers_ = drivers_of(sources_.sysfs);
  machine_ = build_machine(find_all(wants_functions));
  system_ = unless_silent("the machine's name", [this] { return find_system(); });
  for (const auto& notice : machine_.notices) note(notice);
  if (!is_told(machine_.functions, "PCI functions in " + function_source())) machine_.functions.reset();
  if (machine_.functions) names_ = find_names();
}

Findings Survey::find_all(bool wants_functions) {
  Findings findings;
  const auto find_bus = [&] {
    findings.functions = find_functions();
    if (!sources_.sysfs.empty()) findings.sysfs_slots = read_sysfs_slots(sources_.sysfs);
    return true;
  };
  if (wants_functions && !unless_silent("class pci", find_bus)) findings.functions.reset();
  const auto find_tables = [&] {
    findings.smbios = find_smbios();
    return true;
  };
  smbios_is_silent_ = !unless_silent("what SMBIOS tells", find_tables);
  return findings;
}

void Survey::note(const std::string& line) const {
  if (observer_.notice) observer_.notice(line);
}

void Survey::note_left(std::string_view what) const {
  note("no " + std::string(what) + ": they are left as they are");
}

void Survey::note_silent(std::string_view problem, std::string_view what) const {
  const std::string line = std::string(problem) + ": " + std::string(what) + " is left as it is";
  if (observer_.silence)
    observer_.silence(line);
  else
    note(line);
}

std::string Survey::function_source() const {
  return sources_.lspci.empty() ? sources_.sysfs + "/bus/pci/devices" : sources_.lspci;
}

std::optional<std::vector<PciFunction>> Survey::find_functions() const {
  if (!sources_.lspci.empty()) return find_recorded_functions();
  if (sources_.sysfs.empty()) {
    note("no source describes PCI functions: they are left as they are");
    return std::nullopt;
  }
  auto functions = read_sysfs_functions(sources_.sysfs);
  if (!functions) note_left("PCI functions in " + function_source());
  return functions;
}

std::vector<PciFunction> Survey::find_recorded_functions() const {
  std::vector<std::string> notices;
  auto functions = read_lspci_dump(sources_.lspci, notices);
  for (const auto& notice : notices) note(notice);
  if (sources_.sysfs.empty()) return functions;
  std::map<PciAddress, PciFunction> known;
  for (auto& function : read_sysfs_functions(sources_.sysfs).value_or(std::vector<PciFunction>{})) {
    known.emplace(function.address, std::move(function));
  }
  for (auto& function : functions) {
    const auto same = known.find(function.address);
    if (same != known.end()) add_what_a_dump_lacks(same->second, function);
  }
  return functions;
}

std::optional<SmbiosTables> Survey::find_smbios() {
  auto tables = parse_smbios();
  if (!tables) return std::nullopt;
  for (const auto& notice : tables->notices()) note(notice);
  smbios_breaks_off_ = !tables->is_whole();
  return tables;
}

std::optional<SmbiosTables> Survey::parse_smbios() const {
  if (!sources_.smbios.empty())
    return SmbiosTables::parse_dump(read_source(sources_.smbios), sources_.smbios);
  if (!sources_.sysfs.empty()) return parse_tables_of_tree();
  note("no source has SMBIOS tables: " + std::string(kToldBySmbios));
  return std::nullopt;
}

// A tree is as it is: tables in it that are none are no slip of the user's.
std::optional<SmbiosTables> Survey::parse_tables_of_tree() const {
  const std::string folder = sources_.sysfs + kSmbiosFolder;
  const auto entry_point = read_attribute(folder + "/smbios_entry_point");
  const auto table = read_attribute(folder + "/DMI");
  if (!entry_point || !table) {
    note("no SMBIOS tables can be read in " + folder + ": " + kToldByThemOnly);
    return std::nullopt;
  }
  try {
    return SmbiosTables::parse(as_bytes(*entry_point), *table, folder + "/DMI");
  } catch (const SourceError& error) {
    note(std::string(error.what()) + ": " + kToldByThemOnly);
    return std::nullopt;
  }
}

std::optional<System> Survey::find_system() const {
  System system{{}, {}, !smbios_breaks_off_};
  if (!sources_.sysfs.empty()) system.host_name = read_host_name(sources_.sysfs);
  if (machine_.systems && !machine_.systems->empty()) {
    system.told = machine_.systems->front();
    return system;
  }
  system.is_whole = false;
  const auto told = sources_.sysfs.empty() ? std::nullopt : read_sysfs_system(sources_.sysfs);
  if (told) system.told = *told;
  return told || system.host_name ? std::optional(system) : std::nullopt;
}

PciIds Survey::find_names() const {
  try {
    return PciIds::load(sources_.pci_ids);
  } catch (const SourceError& error) {
    note(std::string("no names of PCI devices: ") + error.what());
    return {};
  }
}

}  // namespace zymdb::collect
