// Every recorded machine is collected without an error, reads back, and costs nothing the second time.
#include <gtest/gtest.h>

#include <filesystem>

#include "collect/collector.h"
#include "collect/machines.h"
#include "collect/sources/pci/lspci_dump.h"
#include "support/inventory.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

// A recorded file as the source it is.
std::vector<std::pair<std::string, Sources>> recorded_sources() {
  std::vector<std::pair<std::string, Sources>> all;
  const auto add = [&all](const char* kind, const std::vector<RecordedFile>& files,
                          std::string Sources::*source) {
    for (const auto& file : files) all.emplace_back(kind + file.name, Sources{}).second.*source = file.path;
  };
  add("pci_", recorded_lspci_dumps(), &Sources::lspci);
  add("dmi_", recorded_smbios_dumps(), &Sources::smbios);
  add("sysfs_", recorded_sysfs_archives(), &Sources::sysfs);
  return all;
}

class RecordedMachine : public InventoryTest,
                        public testing::WithParamInterface<std::pair<std::string, Sources>> {
 protected:
  // The folder of an unpacked archive that holds sysfs; empty when there is none with PCI functions.
  std::string unpack(const std::string& archive) const {
    output_of("tar -xf '" + archive + "' --no-same-owner --delay-directory-restore -C '" +
              folder_.path().string() + "' && chmod -R u+rwX '" + folder_.path().string() + "'");
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
      if (entry.path().string().ends_with("/bus/pci/devices")) {
        return entry.path().parent_path().parent_path().parent_path().string();
      }
    }
    return "";
  }

  TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Machines, RecordedMachine, testing::ValuesIn(recorded_sources()),
                         [](const auto& instance) { return instance.param.first; });

TEST_P(RecordedMachine, IsCollectedOnceAndUnchangedTheSecondTime) {
  Sources sources = GetParam().second;
  size_t expected = 0;
  if (!sources.sysfs.empty()) {
    sources.sysfs = unpack(sources.sysfs);
    if (sources.sysfs.empty()) return;  // an archive of other parts of sysfs
    const auto folders = fs::directory_iterator(sources.sysfs + "/bus/pci/devices");
    expected = static_cast<size_t>(std::distance(begin(folders), end(folders)));
  }
  if (!sources.lspci.empty()) expected = parse_lspci_dump(read_file(sources.lspci), sources.lspci).size();
  const auto first = collect_inventory(sources);
  ASSERT_TRUE(first.ok()) << first.error;
  const auto second = collect_inventory(sources);
  ASSERT_TRUE(second.ok()) << second.error;
  for (const auto& table : second.tables) EXPECT_EQ(table.changed(), 0U) << table.table;

  _ZYMDB_PCI_Generic_List functions{};
  ASSERT_EQ(zymdb_get_pci_generic_info_list(&functions, nullptr), ZYM_DB_STATUS_OK);
  EXPECT_EQ(functions.count, expected);
  free(functions.items);
  _ZYMDB_Processor_List processors{};
  ASSERT_EQ(zymdb_get_processor_list(&processors), ZYM_DB_STATUS_OK);
  EXPECT_EQ(processors.count > 0, !sources.smbios.empty() || !sources.sysfs.empty());
  free(processors.ids);
}

}  // namespace
}  // namespace zymdb::collect
