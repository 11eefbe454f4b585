// What holds for the differences of any two documents.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "documents/applied.h"
#include "documents/documents.h"

namespace zymdb::documents {
namespace {

// Few values, so that parts resemble each other.
class RandomDocuments : public testing::TestWithParam<unsigned> {
 protected:
  std::string one_of(std::initializer_list<const char*> texts) {
    return *(texts.begin() + std::uniform_int_distribution<size_t>(0, texts.size() - 1)(random_));
  }

  Document make() {
    std::vector<Module> modules(std::uniform_int_distribution<size_t>(0, 12)(random_));
    for (Module& module : modules) {
      module.place = one_of({"A1", "A2", "B1", "B2", "C1", ""});
      module.serial = one_of({"s1", "s2", "s3", "s4", "", ""});
      module.model = one_of({"m1", "m2", ""});
      module.size = one_of({"32 GiB", "64 GiB", "empty"});
      module.health = one_of({"ok", "bad"});
    }
    return document(modules);
  }

  std::mt19937 random_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seeds, RandomDocuments, testing::Range(1u, 9u));

TEST_P(RandomDocuments, AreEqualOnceTheirDifferenceIsApplied) {
  for (int round = 0; round < 500; ++round) {
    const Document before = make(), after = make();
    for (const MatchBy by : {MatchBy::kIdentity, MatchBy::kPlace}) {
      const auto changes = difference(before, after, {.by = by, .with_volatile = true});
      const auto rest = difference(applied(before, changes), after, {.by = by, .with_volatile = true});
      ASSERT_TRUE(rest.empty()) << "round " << round << ": " << text_of(rest.front());
    }
  }
}

TEST_P(RandomDocuments, HaveEachPartInOneChangeAtMost) {
  for (int round = 0; round < 500; ++round) {
    const Document before = make(), after = make();
    const auto changes = difference(before, after);
    const auto count = [](const Document& document) {
      const PartClass& of = document.classes.front();
      return std::ranges::count_if(of.parts, [&](const Part& each) { return !of.is_vacant(each); });
    };
    const auto removed = std::ranges::count(changes, ChangeKind::kRemoved, &Change::kind);
    const auto added = std::ranges::count(changes, ChangeKind::kAdded, &Change::kind);
    ASSERT_EQ(count(before) - removed + added, count(after)) << "round " << round;
  }
}

TEST_P(RandomDocuments, DifferTheSameWayRoundInReverse) {
  for (int round = 0; round < 500; ++round) {
    const Document before = make(), after = make();
    const auto there = difference(before, after), back = difference(after, before);
    ASSERT_EQ(std::ranges::count(there, ChangeKind::kAdded, &Change::kind),
              std::ranges::count(back, ChangeKind::kRemoved, &Change::kind));
    ASSERT_EQ(there.size(), back.size());
  }
}

}  // namespace
}  // namespace zymdb::documents
