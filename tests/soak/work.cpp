#include "soak/work.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "collect/collector.h"
#include "controller/database_client.h"
#include "faults/operations.h"
#include "zymdb_network.h"
#include "zymdb_pci_settings.h"

namespace soak {
namespace {

constexpr uint32_t kPortFunction = 0x170000;  // a network function of the machine
constexpr int kPorts = 8;
constexpr int kSettings = 16;

// Statuses from here on are the client's own: the database failed.
constexpr int64_t kClientStatus = 40;

constexpr char kMachine[] = ZYMDB_SOURCE_DIR "/data/example-server/server";
constexpr char kReducedDump[] = "reduced.lspci";

void require(int64_t status, const std::string& what) {
  if (status != 0) throw std::runtime_error(what + " answers " + std::to_string(status));
}

// The machine with and without its last devices, so that each collection has something to write.
void collect(uint32_t number, const std::filesystem::path& folder) {
  const std::string machine = kMachine;
  const std::string dump = number % 2 == 0 ? machine + ".lspci" : (folder / kReducedDump).string();
  zymdb::collect::Sources sources;
  sources.lspci = dump;
  sources.smbios = machine + ".smbios";
  const auto summary = zymdb::collect::collect_inventory(sources);
  if (!summary.ok()) throw std::runtime_error(summary.error);
}

std::string setting_id(int setting) {
  return "Soak.Setting" + std::to_string(setting);
}

void save_settings(uint32_t number, const std::filesystem::path&) {
  std::array<ZYMDB_PCI_Config_Set, kSettings> entries{};
  for (int i = 0; i < kSettings; ++i) {
    auto& entry = entries[static_cast<size_t>(i)];
    std::snprintf(entry.SettingID, sizeof entry.SettingID, "%s", setting_id(i).c_str());
    std::snprintf(entry.PendingValue, sizeof entry.PendingValue, "value %u", number % 1000);
  }
  require(zymdb_save_pci_configSet_list(entries.data(), kSettings), "saving settings");
}

void update_links(uint32_t number, const std::filesystem::path&) {
  const _ZYMDB_PCI_PortLinkState state{1 + number % 2, 25000, number % 101, number % 97, 0};
  for (int port = 0; port < kPorts; ++port)
    require(zymdb_set_network_physical_port_link_state(kPortFunction, &state, port), "updating a link");
}

bool only_reads(std::string_view operation) {
  return operation.starts_with("zymdb_get_") || operation == "dpu_get_log_by_slot";
}

// Every operation that reads. That there is nothing of the kind is a fair answer.
void list_everything(uint32_t, const std::filesystem::path&) {
  for (const faults::Operation& operation : faults::operations()) {
    if (!only_reads(operation.name)) continue;
    const int64_t status = operation.call().status;
    if (status >= kClientStatus || status == ZYM_DB_STATUS_NO_MEMORY) require(status, operation.name);
  }
}

constexpr Work kWorks[] = {
    {"collector", collect},     {"settings", save_settings},    {"links", update_links},
    {"lists", list_everything}, {"lists too", list_everything},
};

// A dump without its last functions: each ends with an empty line.
std::string reduced(std::string dump) {
  for (int functions = 0; functions < 4; ++functions) dump.resize(dump.rfind("\n\n", dump.size() - 3) + 2);
  return dump;
}

struct FreeValues {
  void operator()(zym_db_content_values_t* values) const { zym_db_free_content_values(values); }
};

void insert_port(int index) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  const std::unique_ptr<zym_db_content_values_t, FreeValues> values(zym_db_get_content_values(handle));
  zym_db_content_put_uint(values.get(), "PCIFuncKey", kPortFunction);
  zym_db_content_put_int(values.get(), "Idx", index);
  require(zym_db_insert(handle, "PCIPhysicalPortStat", values.get(), 0, nullptr), "inserting a port");
}

}  // namespace

std::span<const Work> works() {
  return kWorks;
}

void prepare(const std::filesystem::path& folder) {
  std::ifstream file(std::string(kMachine) + ".lspci", std::ios::binary);
  std::ofstream(folder / kReducedDump) << reduced({std::istreambuf_iterator<char>(file), {}});
  for (int port = 0; port < kPorts; ++port) insert_port(port);
  for (int i = 0; i < kSettings; ++i) {
    ZYMDB_PCI_Config_Setting setting{};
    std::snprintf(setting.SettingID, sizeof setting.SettingID, "%s", setting_id(i).c_str());
    std::snprintf(setting.PendingValue, sizeof setting.PendingValue, "none");
    require(extract_PCISetting_info(&setting), "storing a setting");
  }
  collect(0, folder);
}

}  // namespace soak
