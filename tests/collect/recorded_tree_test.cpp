// What recorded trees tell, told again by their links and files alone.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <regex>
#include <set>
#include <string>

#include "collect/collector.h"
#include "collect/machines.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

using Texts = std::set<std::string>;

std::string key_text(const std::string& address) {
  const auto part = [&](size_t at, size_t size) { return std::stoul(address.substr(at, size), nullptr, 16); };
  return std::to_string(part(0, 4) << 24 | part(5, 2) << 16 | part(8, 2) << 8 | part(11, 1));
}

// The addresses on the way to a folder, from the root on.
std::vector<std::string> addresses_in(const std::string& path) {
  const std::regex address("/([0-9a-f]{4}:[0-9a-f]{2}:[01][0-9a-f]\\.[0-7])(?=/|$)");
  std::vector<std::string> found;
  for (std::sregex_iterator match(path.begin(), path.end(), address), end; match != end; ++match)
    found.push_back((*match)[1]);
  return found;
}

std::string real_path(const fs::path& path) {
  auto text = output_of("readlink -m '" + path.string() + "'");
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}

std::string first_word(const fs::path& file) {
  std::ifstream in(file);
  std::string word;
  in >> word;
  return word;
}

std::vector<fs::path> entries(const fs::path& folder) {
  std::vector<fs::path> paths;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) paths.push_back(entry.path());
  return paths;
}

// The trees with PCI functions among the archives, and the example server's.
std::vector<RecordedFile> trees() {
  auto files = recorded_sysfs_archives();
  files.push_back({"example_system", ""});
  return files;
}

class RecordedTree : public InventoryTest, public testing::WithParamInterface<RecordedFile> {
 protected:
  // False for an archive of other parts of sysfs.
  bool collect() {
    const std::string folder = folder_.path().string();
    output_of(GetParam().path.empty()
                  ? "python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + folder + "/sys'"
                  : "tar -xf '" + GetParam().path + "' --no-same-owner --delay-directory-restore -C '" +
                        folder + "' && chmod -R u+rwX '" + folder + "'");
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
      if (entry.path().string().ends_with("/bus/pci/devices"))
        root_ = entry.path().parent_path().parent_path().parent_path();
    }
    if (root_.empty()) return false;
    const auto summary = collect_inventory({.lspci = "", .smbios = "", .sysfs = root_.string()});
    EXPECT_TRUE(summary.ok()) << summary.error;
    return true;
  }

  std::vector<fs::path> functions() const { return entries(root_ / "bus/pci/devices"); }

  static std::string stored(const std::string& address, const char* column) {
    return rows("PCIs", {column}, ("FunKey=" + key_text(address)).c_str());
  }

  static Texts lines(const std::string& text) {
    const auto all = lines_of(text);
    return {all.begin(), all.end()};
  }

  TemporaryFolder folder_;
  fs::path root_;
};

INSTANTIATE_TEST_SUITE_P(Trees, RecordedTree, testing::ValuesIn(trees()),
                         [](const auto& instance) { return name_of(instance.param); });

TEST_P(RecordedTree, HasTheBridgesThatItsFoldersLieIn) {
  if (!collect()) return;
  size_t below_bridges = 0;
  for (const auto& function : functions()) {
    const auto way = addresses_in(real_path(function));
    ASSERT_FALSE(way.empty()) << function;
    const bool has_bridge = way.size() > 1;
    below_bridges += has_bridge ? 1 : 0;
    EXPECT_EQ(stored(way.back(), "BridgeId"), (has_bridge ? key_text(way[way.size() - 2]) : "NULL") + "\n")
        << way.back();
  }
  EXPECT_GT(below_bridges, 0U);
}

TEST_P(RecordedTree, HasTheLinksAndDriversThatItsFilesTell) {
  if (!collect()) return;
  for (const auto& function : functions()) {
    const std::string address = function.filename().string();
    const fs::path driver = function / "driver";
    const std::string name = fs::is_symlink(driver) ? fs::read_symlink(driver).filename().string() : "NULL";
    EXPECT_EQ(stored(address, "Driver"), name + "\n") << address;
    const std::string node = first_word(function / "numa_node");
    EXPECT_EQ(stored(address, "NUMANode"), (node.empty() || node == "-1" ? "NULL" : node) + "\n") << address;
    if (fs::exists(function / "current_link_width")) {
      EXPECT_EQ(stored(address, "LanesInUse"), first_word(function / "current_link_width") + "\n") << address;
    }
  }
}

TEST_P(RecordedTree, HasTheInterfacesOfItsFunctions) {
  if (!collect()) return;
  Texts expected;
  for (const auto& interface : entries(root_ / "class/net")) {
    const auto way = addresses_in(real_path(interface));
    if (!way.empty()) expected.insert(key_text(way.back()) + "|" + interface.filename().string());
  }
  // Beside them are ports that the system has a device for, but no interface.
  EXPECT_THAT(lines(rows("PCIPhysicalPort", {"PCIFuncKey", "InterfaceName"}, "InterfaceName IS NOT NULL")),
              testing::IsSupersetOf(expected));
}

TEST_P(RecordedTree, HasItsDrivesEachOnce) {
  if (!collect()) return;
  std::multiset<std::string> expected;
  const auto add = [&](const fs::path& drive) {
    const auto way = addresses_in(real_path(drive));
    if (!way.empty()) expected.insert(key_text(way.back()));
  };
  for (const auto& disk : entries(root_ / "block")) {
    const std::string name = disk.filename().string();
    if (name.starts_with("sd") || name.starts_with("vd")) add(disk);
  }
  for (const auto& drive : entries(root_ / "class/nvme")) add(drive);
  const auto stored = lines_of(rows("AimDisks", {"PCIFuncKey"}));
  EXPECT_EQ(std::multiset<std::string>(stored.begin(), stored.end()), expected);
  EXPECT_FALSE(expected.empty());
}

}  // namespace
}  // namespace zymdb::collect
