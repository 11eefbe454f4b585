// What a watcher tells of the open inventory, look by look.
#include "documents/watcher.h"

#include <gmock/gmock.h>

#include "documents/inventory_types.h"
#include "records/pci.h"
#include "support/inventory.h"

namespace zymdb::documents {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class WatcherTest : public InventoryTest {
 protected:
  static Watcher watcher() { return {inventory_types(records::kPciIdsFile), DifferenceOptions{}}; }

  static void given_module(int slot) {
    given("Memory", {{"SlotNo", slot}, {"MemSize", 65536}, {"DevLocator", "A" + std::to_string(slot)}});
  }
};

TEST_F(WatcherTest, TakesWhatComesIntoANewInventoryForItsBaseline) {
  Watcher watching = watcher();
  EXPECT_FALSE(watching.has_news());
  given_module(1);
  ASSERT_TRUE(watching.has_news());
  const Event first = watching.look();
  EXPECT_TRUE(first.is_baseline);
  EXPECT_THAT(first.changes, SizeIs(1));
  given_module(2);
  const Event second = watching.look();
  EXPECT_FALSE(second.is_baseline);
  EXPECT_GT(second.generation, first.generation);
  ASSERT_THAT(second.changes, SizeIs(1));
  EXPECT_EQ(second.changes[0].kind, ChangeKind::kAdded);
}

TEST_F(WatcherTest, TellsAFirstPartOfItsKindAsAdded) {
  given_module(1);
  auto types = inventory_types(records::kPciIdsFile);
  std::erase_if(types, [](const RecordType& type) { return type.name != "drives"; });
  Watcher watching(types, DifferenceOptions{});
  given("AimDisks", {{"SlotNo", 1}, {"BayNo", 1}, {"Presence", 1}, {"SerialNo", "S1"}});
  const Event event = watching.look();
  EXPECT_FALSE(event.is_baseline);
  EXPECT_THAT(event.changes, SizeIs(1));
}

TEST_F(WatcherTest, TellsNothingWhereNothingChanged) {
  given_module(1);
  Watcher watching = watcher();
  EXPECT_FALSE(watching.has_news());
  EXPECT_THAT(watching.look().changes, IsEmpty());
}

}  // namespace
}  // namespace zymdb::documents
