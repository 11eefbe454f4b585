#include "collect/collector.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "collect/model/machine.h"
#include "collect/rows/drive_rows.h"
#include "collect/rows/firmware_rows.h"
#include "collect/rows/inventory_rows.h"
#include "collect/rows/network_rows.h"
#include "collect/rows/port_context.h"
#include "collect/sources/pci/lspci_dump.h"
#include "collect/sources/pci/pci_ids.h"
#include "collect/sources/smbios/smbios.h"
#include "collect/sources/sysfs/nvme_health.h"
#include "collect/sources/sysfs/sysfs_drives.h"
#include "collect/sources/sysfs/sysfs_firmware.h"
#include "collect/sources/sysfs/sysfs_network.h"
#include "collect/sources/sysfs/sysfs_pci.h"
#include "collect/write/inventory_writer.h"
#include "common/source_file.h"
#include "common/transaction.h"
#include "controller/database_client.h"

namespace zymdb::collect {
namespace {

constexpr char kRunningMachine[] = "/sys";
constexpr char kSmbiosFolder[] = "/firmware/dmi/tables";
constexpr char kNvidiaFolder[] = "/proc/driver/nvidia/gpus";

class Collector {
 public:
  Collector(const Sources& sources, const Observer& observer) : sources_(sources), observer_(observer) {
    if (sources_.lspci.empty() && sources_.smbios.empty() && sources_.sysfs.empty())
      sources_.sysfs = kRunningMachine;
  }

  std::vector<TableSummary> collect() {
    Findings findings{.functions = find_functions(), .sysfs_slots = {}, .smbios = find_smbios()};
    if (!sources_.sysfs.empty()) findings.sysfs_slots = read_sysfs_slots(sources_.sysfs);
    const Machine machine = build_machine(std::move(findings));
    for (const auto& notice : machine.notices) note(notice);
    const PciIds names = machine.functions ? find_names() : PciIds();
    const auto drives = find_drives(machine);
    _zym_db_handle_t* handle = get_dmdb_handle();
    if (handle == nullptr) throw DatabaseError("the inventory cannot be opened");
    Transaction transaction(handle);
    auto tables = inventory_rows(machine, names);
    if (machine.functions && !sources_.sysfs.empty()) {
      std::ranges::move(port_rows(handle, machine, sources_.sysfs), std::back_inserter(tables));
      tables.push_back(component_rows(machine, names, sources_.sysfs));
    }
    if (drives) tables.push_back(disk_rows(machine, *drives));
    auto summaries = write_inventory(handle, tables, observer_);
    if (drives) write_nvme_drives(machine, *drives, observer_, summaries.back());
    transaction.commit();
    return summaries;
  }

 private:
  void note(const std::string& line) const {
    if (observer_.notice) observer_.notice(line);
  }

  std::optional<std::vector<PciFunction>> find_functions() const {
    if (!sources_.lspci.empty()) return find_recorded_functions();
    if (sources_.sysfs.empty()) {
      note("no source describes PCI functions: they are left as they are");
      return std::nullopt;
    }
    auto functions = read_sysfs_functions(sources_.sysfs);
    if (!functions)
      note("no PCI functions in " + sources_.sysfs + "/bus/pci/devices: they are left as they are");
    return functions;
  }

  std::vector<PciFunction> find_recorded_functions() const {
    auto functions = parse_lspci_dump(read_source(sources_.lspci), sources_.lspci);
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

  static void add_what_a_dump_lacks(const PciFunction& from, PciFunction& function) {
    if (from.vendor != function.vendor || from.device != function.device) return;
    function.link = from.link;
    function.parent = from.parent;
    function.numa_node = from.numa_node;
    function.video_memory = from.video_memory;
    function.vpd = from.vpd;
  }

  std::optional<SmbiosTables> find_smbios() const {
    if (!sources_.smbios.empty())
      return SmbiosTables::parse_dump(read_source(sources_.smbios), sources_.smbios);
    if (sources_.sysfs.empty()) {
      note("no source has SMBIOS tables: processors, memory and places of devices are left as they are");
      return std::nullopt;
    }
    const std::string folder = sources_.sysfs + kSmbiosFolder;
    const auto entry_point = read_attribute(folder + "/smbios_entry_point");
    const auto table = read_attribute(folder + "/DMI");
    if (!entry_point || !table) {
      note("no SMBIOS tables can be read in " + folder +
           ": processors, memory and places of devices are left as they are");
      return std::nullopt;
    }
    return SmbiosTables::parse(as_bytes(*entry_point), *table, folder + "/DMI");
  }

  static std::vector<TableContent> port_rows(_zym_db_handle_t* handle, const Machine& machine,
                                             const std::string& sysfs) {
    const auto ports = read_sysfs_ports(sysfs, sysfs == kRunningMachine ? read_ethtool : EthtoolReader());
    if (!ports) return {};
    return network_rows(machine, *ports, read_port_context(handle));
  }

  std::optional<std::vector<Drive>> find_drives(const Machine& machine) const {
    if (!machine.functions || sources_.sysfs.empty()) return std::nullopt;
    const bool is_running = sources_.sysfs == kRunningMachine;
    return read_sysfs_drives(sources_.sysfs, is_running ? read_nvme_health : HealthReader());
  }

  static TableContent component_rows(const Machine& machine, const PciIds& names, const std::string& sysfs) {
    const bool is_running = sysfs == kRunningMachine;
    const FirmwareDrivers drivers =
        is_running ? FirmwareDrivers{read_firmware_version, kNvidiaFolder} : FirmwareDrivers{};
    return firmware_rows(machine, read_sysfs_firmware(sysfs, drivers), names, is_running);
  }

  PciIds find_names() const {
    try {
      return PciIds::load(sources_.pci_ids);
    } catch (const SourceError& error) {
      note(std::string("no names of PCI devices: ") + error.what());
      return {};
    }
  }

  Sources sources_;
  const Observer& observer_;
};

}  // namespace

Summary collect_inventory(const Sources& sources, const Observer& observer) {
  Summary summary;
  try {
    summary.tables = Collector(sources, observer).collect();
  } catch (const SourceError& error) {
    summary.error = error.what();
  } catch (const DatabaseError& error) {
    summary.error = error.what();
  }
  return summary;
}

}  // namespace zymdb::collect
