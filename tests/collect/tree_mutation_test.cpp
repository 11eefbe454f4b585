// A recorded tree in which anything stands where attributes should be: it is read or refused, never waited
// for, and what was read once is unchanged the second time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "collect/collector.h"
#include "collect/machines.h"
#include "support/inventory.h"

namespace zymdb::collect {
namespace {

namespace fs = std::filesystem;

class TreeMutation : public InventoryTest {
 protected:
  TreeMutation() {
    output_of("python3 " ZYMDB_EXAMPLE_SERVER "/system_tree.py '" + tree_.path().string() + "'");
    for (const auto& entry : fs::recursive_directory_iterator(tree_.path())) {
      if (entry.is_regular_file() || entry.is_symlink()) attributes_.push_back(entry.path());
    }
    std::ranges::sort(attributes_);
  }

  size_t at_random(size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(random_); }

  // Something else in an attribute's place, which is kept beside it.
  void mutate(const fs::path& attribute) {
    const fs::path kept = attribute.string() + kKept;
    if (fs::exists(fs::symlink_status(kept))) return;
    fs::rename(attribute, kept);
    switch (at_random(8)) {
      case 0:
        ASSERT_EQ(mkfifo(attribute.c_str(), 0600), 0);
        break;
      case 1:
        fs::create_directory(attribute);
        break;
      case 2:
        fs::create_symlink("/dev/zero", attribute);
        break;
      case 3:
        fs::create_symlink(attribute, attribute);
        break;
      case 4:
        break;  // gone
      default:
        std::ofstream(attribute, std::ios::binary) << mutated(kept);
    }
  }

  // The content with other bytes in it, cut, or another attribute's.
  std::string mutated(const fs::path& kept) {
    if (!fs::is_regular_file(kept)) return "text\n";
    std::string content = read_file(kept.string());
    for (size_t i = 0; i < 3 && !content.empty(); ++i)
      content[at_random(content.size())] = static_cast<char>(at_random(256));
    if (at_random(3) == 0) content.resize(at_random(content.size() + 1));
    if (at_random(4) == 0) content = "-1\n";
    return content;
  }

  void restore() {
    for (const auto& attribute : attributes_) {
      const fs::path kept = attribute.string() + kKept;
      if (!fs::exists(fs::symlink_status(kept))) continue;
      fs::remove_all(attribute);
      fs::rename(kept, attribute);
    }
  }

  Summary collect() const {
    return collect_inventory({.lspci = "", .smbios = "", .sysfs = tree_.path().string()});
  }

  static constexpr char kKept[] = ".kept";

  TemporaryFolder tree_;
  std::vector<fs::path> attributes_;
  std::mt19937 random_{20261122};
};

TEST_F(TreeMutation, IsReadOrRefusedAndNeverWaitedFor) {
  constexpr int kRounds = 25;
  constexpr size_t kAttributes = 60;
  int read = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    for (size_t i = 0; i < kAttributes; ++i) mutate(attributes_[at_random(attributes_.size())]);
    const auto first = collect();
    const auto second = collect();
    EXPECT_EQ(first.error, second.error);
    for (const auto& table : second.tables) EXPECT_EQ(table.changed(), 0U) << table.table;
    read += first.ok() ? 1 : 0;
    restore();
  }
  EXPECT_GT(read, kRounds / 2);
  EXPECT_TRUE(collect().ok());
  EXPECT_EQ(rows("PCIs", {"COUNT(*)"}), "58\n");
}

}  // namespace
}  // namespace zymdb::collect
