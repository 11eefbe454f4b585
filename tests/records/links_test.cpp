// A link is judged by what both of its ends can do.
#include "records/links.h"

#include <gtest/gtest.h>

#include <string>

namespace zymdb::records {
namespace {

constexpr FunctionKey kRootPort(0, 0, 1, 0);
constexpr FunctionKey kCard(0, 1, 0, 0);
constexpr FunctionKey kSecondFunction(0, 1, 0, 1);

// "in use of the most".
Link link(unsigned lanes, unsigned max_lanes, unsigned generation, unsigned max_generation) {
  return {.bridge = {},
          .is_bridge = false,
          .lanes = lanes,
          .max_lanes = max_lanes,
          .generation = generation,
          .max_generation = max_generation};
}

Link port(Link link) {
  link.is_bridge = true;
  return link;
}

Link below(FunctionKey bridge, Link link) {
  link.bridge = bridge;
  return link;
}

struct Pair {
  const char* what;
  Link port;
  Link card;
  LinkState state;  // of both ends
};

const Pair kPairs[] = {
    {"as good as it gets", link(16, 16, 4, 4), link(16, 16, 4, 4), LinkState::kFull},
    {"a narrow card in a wide slot", link(4, 16, 3, 3), link(4, 4, 3, 3), LinkState::kFull},
    {"a wide card in a narrow slot", link(4, 4, 3, 3), link(4, 16, 3, 3), LinkState::kFull},
    {"a slow card in a fast slot", link(8, 8, 2, 4), link(8, 8, 2, 2), LinkState::kFull},
    {"a fast card in a slow slot", link(8, 8, 3, 3), link(8, 8, 3, 5), LinkState::kFull},
    {"each end limits the other", link(4, 4, 3, 5), link(4, 16, 3, 3), LinkState::kFull},
    {"fewer lanes than both have", link(8, 16, 4, 4), link(8, 16, 4, 4), LinkState::kReduced},
    {"slower than both can do", link(16, 16, 1, 4), link(16, 16, 1, 3), LinkState::kReduced},
    {"narrower and slower", link(1, 16, 1, 4), link(1, 8, 1, 4), LinkState::kReduced},
    {"one lane less in a narrow slot", link(4, 8, 3, 3), link(4, 16, 3, 3), LinkState::kReduced},
    {"nothing in use", link(0, 16, 1, 4), link(0, 16, 1, 4), LinkState::kDown},
};

TEST(LinkState, OfAFunctionWithoutALinkIsUnknown) {
  const Links links{{kRootPort, link(0, 0, 0, 0)}};
  EXPECT_EQ(state_of(links, kRootPort), LinkState::kUnknown);
}

TEST(LinkState, IsNotJudgedByAFunctionBelowThatHasNone) {
  const Links links{{kRootPort, port(link(8, 16, 4, 4))},
                    {kCard, below(kRootPort, link(0, 0, 0, 0))},
                    {kSecondFunction, below(kRootPort, link(8, 16, 4, 4))}};
  EXPECT_EQ(state_of(links, kRootPort), LinkState::kReduced);
}

TEST(LinkState, IsThatOfBothEndsTogether) {
  for (const auto& [what, above, card, state] : kPairs) {
    const Links links{{kRootPort, port(above)}, {kCard, below(kRootPort, card)}};
    EXPECT_EQ(state_of(links, kCard), state) << what;
    EXPECT_EQ(state_of(links, kRootPort), state) << what;
  }
}

TEST(LinkState, OfEveryFunctionOfACardIsTheSame) {
  const Links links{{kRootPort, port(link(8, 16, 4, 4))},
                    {kCard, below(kRootPort, link(8, 16, 4, 4))},
                    {kSecondFunction, below(kRootPort, link(8, 16, 4, 4))}};
  EXPECT_EQ(state_of(links, kSecondFunction), LinkState::kReduced);
}

TEST(LinkState, OfAnEmptyPortIsDown) {
  EXPECT_EQ(state_of({{kRootPort, port(link(0, 16, 1, 4))}}, kRootPort), LinkState::kDown);
}

TEST(LinkState, WithoutAnotherEndIsFull) {
  EXPECT_EQ(state_of({{kRootPort, port(link(4, 16, 1, 4))}}, kRootPort), LinkState::kFull);
  EXPECT_EQ(state_of({{kCard, below(kRootPort, link(4, 16, 1, 4))}}, kCard), LinkState::kFull)
      << "its bridge is not in the inventory";
  EXPECT_EQ(state_of({{kCard, link(4, 16, 1, 4)}}, kCard), LinkState::kFull) << "a part of the root complex";
}

TEST(LinkState, IsUnknownWithoutLanesOrFunction) {
  Link silent = link(1, 16, 1, 4);
  silent.lanes.reset();
  EXPECT_EQ(state_of({{kCard, silent}}, kCard), LinkState::kUnknown);
  EXPECT_EQ(state_of({}, kCard), LinkState::kUnknown);
}

TEST(LinkState, IsNotReducedByWhatAnEndDoesNotTell) {
  Link unsure = link(4, 16, 1, 4);
  unsure.max_lanes.reset();
  unsure.max_generation.reset();
  const Links links{{kRootPort, port(link(4, 16, 1, 4))}, {kCard, below(kRootPort, unsure)}};
  EXPECT_EQ(state_of(links, kCard), LinkState::kFull);
  EXPECT_EQ(state_of(links, kRootPort), LinkState::kFull);
}

// Root port, switch (a port that looks up, two that look down) and a card behind each.
class Switch : public testing::Test {
 protected:
  static constexpr FunctionKey kUp{0, 1, 0, 0};
  static constexpr FunctionKey kDown{0, 2, 0, 0};
  static constexpr FunctionKey kOtherDown{0, 2, 1, 0};
  static constexpr FunctionKey kBehind{0, 3, 0, 0};
  static constexpr FunctionKey kOtherBehind{0, 4, 0, 0};

  Links links_{
      {kRootPort, port(link(8, 16, 4, 4))},        {kUp, below(kRootPort, port(link(8, 8, 4, 4)))},
      {kDown, below(kUp, port(link(4, 4, 3, 4)))}, {kOtherDown, below(kUp, port(link(2, 4, 4, 4)))},
      {kBehind, below(kDown, link(4, 4, 3, 3))},   {kOtherBehind, below(kOtherDown, link(2, 4, 4, 4))},
  };
};

TEST_F(Switch, IsJudgedLinkByLink) {
  for (const FunctionKey full : {kRootPort, kUp, kDown, kBehind})
    EXPECT_EQ(state_of(links_, full), LinkState::kFull) << full.text();
  for (const FunctionKey reduced : {kOtherDown, kOtherBehind})
    EXPECT_EQ(state_of(links_, reduced), LinkState::kReduced) << reduced.text();
}

TEST_F(Switch, WithAnEmptyPortHasAPortThatIsDown) {
  links_.erase(kOtherBehind);
  links_[kOtherDown].lanes = 0;
  EXPECT_EQ(state_of(links_, kOtherDown), LinkState::kDown);
  EXPECT_EQ(state_of(links_, kUp), LinkState::kFull);
}

TEST_F(Switch, BelowASlowRootPortLimitsOnlyTheLinkToIt) {
  links_[kRootPort] = port(link(8, 16, 1, 1));
  links_[kUp] = below(kRootPort, port(link(8, 8, 1, 4)));
  EXPECT_EQ(state_of(links_, kUp), LinkState::kFull);
  EXPECT_EQ(state_of(links_, kOtherBehind), LinkState::kReduced);
}

// Whatever such an inventory means, asking for it ends.
TEST(LinkState, OfBridgesInALoopIsAnswered) {
  const Links one{{kCard, below(kCard, port(link(1, 4, 1, 4)))}};
  EXPECT_NE(state_of(one, kCard), LinkState::kUnknown);
  const Links two{{kRootPort, below(kCard, port(link(1, 4, 1, 4)))},
                  {kCard, below(kRootPort, port(link(1, 4, 1, 4)))}};
  EXPECT_EQ(state_of(two, kCard), LinkState::kReduced);
}

}  // namespace
}  // namespace zymdb::records
