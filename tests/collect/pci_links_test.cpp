// Links as configuration spaces tell of them: in use, down, not there, not shown.
#include <gtest/gtest.h>

#include <vector>

#include "collect/sources/pci/pci_function.h"

namespace zymdb::collect {
namespace {

constexpr size_t kExpress = 0x40;
constexpr unsigned kEndpoint = 0;
constexpr unsigned kRootPort = 4;
constexpr unsigned kIntegratedEndpoint = 9;
constexpr unsigned kEventCollector = 10;

std::vector<uint8_t> plain_config(size_t size = 256) {
  std::vector<uint8_t> config(size);
  config[0] = 0x86;
  config[1] = 0x80;
  return config;
}

// With a PCI Express capability: the lanes and generation that it can do, and those in use.
std::vector<uint8_t> express_config(unsigned type, unsigned max_lanes, unsigned lanes, unsigned generation) {
  auto config = plain_config();
  config[0x06] = 0x10;
  config[0x34] = kExpress;
  config[kExpress] = 0x10;
  config[kExpress + 2] = static_cast<uint8_t>(type << 4 | 2);
  config[kExpress + 0x0c] = static_cast<uint8_t>(max_lanes << 4 | 4);
  config[kExpress + 0x0d] = static_cast<uint8_t>(max_lanes >> 4);
  config[kExpress + 0x12] = static_cast<uint8_t>(lanes << 4 | generation);
  return config;
}

PciLink link_of(const std::vector<uint8_t>& config) {
  PciFunction function;
  decode_config(config, function);
  return function.link;
}

void expect_no_link(const PciLink& link) {
  EXPECT_EQ(link.width, 0);
  EXPECT_EQ(link.generation, 0);
  EXPECT_EQ(link.max_width, 0);
  EXPECT_EQ(link.max_generation, 0);
}

void expect_unknown(const PciLink& link) {
  EXPECT_FALSE(link.width);
  EXPECT_FALSE(link.generation);
  EXPECT_FALSE(link.max_width);
  EXPECT_FALSE(link.max_generation);
}

TEST(PciLinks, ThatAreDownHaveNoLanes) {
  const auto link = link_of(express_config(kRootPort, 16, 0, 1));
  EXPECT_EQ(link.width, 0);
  EXPECT_EQ(link.generation, 1);
  EXPECT_EQ(link.max_width, 16);
  EXPECT_EQ(link.max_generation, 4);
}

TEST(PciLinks, AreNotThereWithoutACapability) {
  expect_no_link(link_of(plain_config()));
  auto other = express_config(kEndpoint, 8, 8, 3);
  other[kExpress] = 0x11;
  expect_no_link(link_of(other));
}

TEST(PciLinks, AreNotThereWithinTheRootComplex) {
  expect_no_link(link_of(express_config(kIntegratedEndpoint, 8, 8, 3)));
  expect_no_link(link_of(express_config(kEventCollector, 8, 8, 3)));
}

TEST(PciLinks, AreUnknownWhereTheBytesEndBeforeThem) {
  expect_unknown(link_of(plain_config(64)));
  auto config = express_config(kEndpoint, 8, 8, 3);
  config.resize(64);
  expect_unknown(link_of(config));
  auto beyond = express_config(kEndpoint, 8, 8, 3);
  beyond[kExpress] = 0x01;
  beyond[kExpress + 1] = 0x80;
  beyond.resize(128);
  expect_unknown(link_of(beyond));
  auto cut = plain_config(128);
  cut[0x06] = 0x10;
  cut[0x34] = 0x7c;
  cut[0x7c] = 0x10;
  expect_unknown(link_of(cut));
}

TEST(PciLinks, AreUnknownWhereCapabilitiesAreALoop) {
  auto config = express_config(kEndpoint, 8, 8, 3);
  config[kExpress] = 0x01;
  config[kExpress + 1] = kExpress;
  expect_unknown(link_of(config));
}

}  // namespace
}  // namespace zymdb::collect
