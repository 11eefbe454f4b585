// What a caller's filter can and cannot do, through every operation of the PCI devices that takes one.
#include <filesystem>
#include <functional>
#include <tuple>

#include "support/hostile_texts.h"
#include "support/inventory.h"
#include "zymdb_pci.h"

namespace {

using Read = std::function<void(std::string)>;

class HostileFilter : public InventoryTest, public testing::WithParamInterface<int> {
 protected:
  HostileFilter() {
    for (int function = 0; function < 3; ++function)
      given("PCIs", {{"FunKey", function}, {"DevKey", function}, {"Location", 1}, {"SlotNo", function}});
    given("PCIAdapter", {{"PCIKey", 1}, {"CardName", "a card"}});
  }
  static std::string everything() {
    return rows("PCIs", {"FunKey", "DevKey", "Location", "SlotNo"}) +
           rows("PCIAdapter", {"PCIKey", "CardName"});
  }
};

const std::pair<const char*, Read> kReads[] = {
    {"zymdb_get_pci_keys",
     [](std::string filter) {
       _ZYMDB_PCI_Key_List list{};
       zymdb_get_pci_keys(&list, filter.c_str());
       EXPECT_LE(list.count, 3u);
       std::free(list.keys);
     }},
    {"zymdb_get_pci_funkey_list_by_filter",
     [](std::string filter) {
       _ZYMDB_PCI_FunKey_List list{};
       zymdb_get_pci_funkey_list_by_filter(filter.data(), &list);
       EXPECT_LE(list.count, 3u);
       std::free(list.keys);
     }},
    {"zymdb_get_pci_generic_info_list",
     [](std::string filter) {
       _ZYMDB_PCI_Generic_List list{};
       zymdb_get_pci_generic_info_list(&list, filter.c_str());
       EXPECT_LE(list.count, 3u);
       std::free(list.items);
     }},
};

// A filter may select rows of its own table, and nothing else: no row changes, no file appears.
TEST_P(HostileFilter, ReadsRowsOfItsTableOrFails) {
  const auto& [name, read] = kReads[GetParam()];
  const std::string before = everything();
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(std::string(name) + ": " + text.substr(0, 100));
    for (const std::string& filter :
         {text, "SlotNo=" + text, "SlotDesignation='" + text + "'", "SlotDesignation=\"" + text + "\"",
          "SlotDesignation like '" + text + "%'"})
      read(filter);
  }
  EXPECT_EQ(everything(), before);
  EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile"));
}

INSTANTIATE_TEST_SUITE_P(Operations, HostileFilter, testing::Range(0, static_cast<int>(std::size(kReads))),
                         [](const auto& test) { return std::string(kReads[test.param].first); });

constexpr size_t kShown = 2047;  // of a longer text, by rows()

using Write = int (*)(const char*, int);
constexpr std::tuple<const char*, Write, const char*, const char*> kWrites[] = {
    {"zymdb_update_nvidia_gpu_fw_version", zymdb_update_nvidia_gpu_fw_version, "Firmwares", "VersionString"},
    {"zymdb_update_nvidia_gpu_fw_release_date", zymdb_update_nvidia_gpu_fw_release_date, "Firmwares",
     "ReleaseDate"},
    {"zymdb_update_nvidia_gpu_serial_number", zymdb_update_nvidia_gpu_serial_number, "VPDs", "SerialNo"},
};

class HostileNvidiaText : public InventoryTest, public testing::WithParamInterface<int> {};

// What an NVIDIA card's manager writes is a text in the card's own row, whatever it holds.
TEST_P(HostileNvidiaText, IsStoredAsItIsAndNowhereElse) {
  const auto& [name, write, table, column] = kWrites[GetParam()];
  given("PCIs", {{"FunKey", 1}, {"BusNo", 0x31}, {"HardwareId", 7}});
  given(table, {{"HardwareId", 7}, {"Manufacture", "NVIDIA"}});
  given(table, {{"HardwareId", 7}, {"Manufacture", "Other"}, {column, "theirs"}});
  given(table, {{"HardwareId", 8}, {"Manufacture", "NVIDIA"}, {column, "another's"}});
  for (const std::string& text : hostile_texts()) {
    SCOPED_TRACE(std::string(name) + ": " + text.substr(0, 100));
    ASSERT_EQ(write(text.c_str(), 0x31), ZYM_DB_STATUS_OK);
    ASSERT_EQ(rows(table, {column}), text.substr(0, kShown) + "\ntheirs\nanother's\n");
  }
  EXPECT_EQ(rows("PCIs", {"FunKey", "BusNo", "HardwareId"}), "1|49|7\n");
  EXPECT_FALSE(std::filesystem::exists("/tmp/zymdb-hostile"));
}

INSTANTIATE_TEST_SUITE_P(Operations, HostileNvidiaText,
                         testing::Range(0, static_cast<int>(std::size(kWrites))),
                         [](const auto& test) { return std::string(std::get<0>(kWrites[test.param])); });

}  // namespace
