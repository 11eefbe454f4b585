// What ethtool's kernel interface tells, and what its numbers mean.
#include "collect/sources/sysfs/ethtool.h"

#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>

namespace zymdb::collect {
namespace {

std::array<uint32_t, 4> modes(std::initializer_list<unsigned> numbers) {
  std::array<uint32_t, 4> set{};
  for (const unsigned number : numbers) set[number / 32] |= 1U << number % 32;
  return set;
}

TEST(LinkModes, TheFastestOfThemIsThePortsSpeed) {
  struct Case {
    std::initializer_list<unsigned> modes;
    std::optional<uint32_t> speed;
  } const cases[] = {
      {{}, {}},
      {{ETHTOOL_LINK_MODE_Autoneg_BIT, ETHTOOL_LINK_MODE_TP_BIT, ETHTOOL_LINK_MODE_Pause_BIT,
        ETHTOOL_LINK_MODE_FEC_RS_BIT, ETHTOOL_LINK_MODE_FEC_LLRS_BIT},
       {}},
      {{ETHTOOL_LINK_MODE_10baseT_Half_BIT}, 10},
      {{ETHTOOL_LINK_MODE_1000baseT_Full_BIT, ETHTOOL_LINK_MODE_100baseT_Full_BIT}, 1000},
      {{ETHTOOL_LINK_MODE_1000baseX_Full_BIT}, 1000},
      {{ETHTOOL_LINK_MODE_2500baseT_Full_BIT}, 2500},
      {{ETHTOOL_LINK_MODE_5000baseT_Full_BIT}, 5000},
      {{ETHTOOL_LINK_MODE_10000baseT_Full_BIT}, 10'000},
      {{ETHTOOL_LINK_MODE_10000baseSR_Full_BIT}, 10'000},
      {{ETHTOOL_LINK_MODE_25000baseCR_Full_BIT, ETHTOOL_LINK_MODE_10000baseCR_Full_BIT}, 25'000},
      {{ETHTOOL_LINK_MODE_40000baseSR4_Full_BIT}, 40'000},
      {{ETHTOOL_LINK_MODE_50000baseCR2_Full_BIT}, 50'000},
      {{ETHTOOL_LINK_MODE_50000baseDR_Full_BIT}, 50'000},
      {{ETHTOOL_LINK_MODE_56000baseKR4_Full_BIT}, 56'000},
      {{ETHTOOL_LINK_MODE_100000baseLR4_ER4_Full_BIT}, 100'000},
      {{ETHTOOL_LINK_MODE_100000baseKR_Full_BIT}, 100'000},
      {{ETHTOOL_LINK_MODE_200000baseKR4_Full_BIT}, 200'000},
      {{ETHTOOL_LINK_MODE_400000baseCR4_Full_BIT}, 400'000},
      {{ETHTOOL_LINK_MODE_100baseT1_Full_BIT}, 100},
  };
  for (const auto& [set, speed] : cases) EXPECT_EQ(fastest_mode(modes(set)), speed) << speed.value_or(0);
}

TEST(LinkModes, BeyondTheAnswersEndAreNotSet) {
  EXPECT_EQ(fastest_mode({}), std::nullopt);
  const auto set = modes({ETHTOOL_LINK_MODE_400000baseCR4_Full_BIT});
  EXPECT_EQ(fastest_mode(std::span(set).first(2)), std::nullopt);
}

TEST(Connectors, FollowFromTheMediumAndForModulesFromTheSpeed) {
  struct Case {
    unsigned medium;
    std::optional<uint32_t> speed;
    std::optional<Connector> connector;
  } const cases[] = {
      {PORT_TP, 10'000, Connector::kRj45},
      {PORT_TP, {}, Connector::kRj45},
      {PORT_AUI, 10, Connector::kAui},
      {PORT_BNC, 10, Connector::kBnc},
      {PORT_FIBRE, 1000, {}},
      {PORT_FIBRE, {}, {}},
      {PORT_FIBRE, 10'000, Connector::kSfpPlus},
      {PORT_DA, 25'000, Connector::kSfp28},
      {PORT_DA, 40'000, Connector::kQsfpPlus},
      {PORT_FIBRE, 50'000, Connector::kSfp56},
      {PORT_DA, 100'000, Connector::kQsfp28},
      {PORT_DA, 200'000, Connector::kQsfp56},
      {PORT_DA, 400'000, Connector::kQsfp112},
      {PORT_DA, 800'000, {}},
      {PORT_OTHER, 10'000, {}},
      {PORT_NONE, 10'000, {}},
  };
  for (const auto& [medium, speed, connector] : cases)
    EXPECT_EQ(connector_of(medium, speed), connector) << medium << " " << speed.value_or(0);
}

TEST(Addresses, AreWrittenInUpperCaseWithColons) {
  EXPECT_EQ(address_text(std::array<uint8_t, 6>{0x3C, 0xFD, 0xFE, 0, 0, 1}), "3C:FD:FE:00:00:01");
  EXPECT_EQ(address_text(std::array<uint8_t, 6>{}), std::nullopt);
  EXPECT_EQ(address_text({}), std::nullopt);
}

TEST(Ethtool, OfAnInterfaceThatIsNotThereTellsNothing) {
  for (const char* name : {"zymdb-none", "a name that is longer than any interface's", ""}) {
    const EthtoolSettings settings = read_ethtool(name);
    EXPECT_FALSE(settings.permanent_address || settings.max_speed || settings.connector) << name;
  }
}

// Root may; others become root of a user namespace first.
bool enter_network_namespace() {
  const uid_t user = getuid();
  if (unshare(CLONE_NEWNET) == 0) return true;
  if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return false;
  std::ofstream map("/proc/self/uid_map");
  map << "0 " << user << " 1" << std::endl;
  return map.good();
}

// What went wrong in a network namespace of its own: 0 nothing. The loopback interface is everywhere; a pair
// of virtual ones can be had where the test may make one.
int check_in_namespace() {
  const EthtoolSettings loopback = read_ethtool("lo");
  if (loopback.permanent_address || loopback.connector) return 1;
  if (!enter_network_namespace()) return 0;
  if (std::system("ip link add zymdb0 type veth peer name zymdb1 2>/dev/null") != 0) return 0;
  return read_ethtool("zymdb0").connector == Connector::kRj45 ? 0 : 2;
}

TEST(Ethtool, OfAVirtualPairTellsItsConnector) {
  const pid_t child = fork();
  if (child == 0) _exit(check_in_namespace());
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace zymdb::collect
