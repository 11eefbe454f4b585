#include "collect/sources/pci/pci_ids.h"

#include <gtest/gtest.h>

#include "collect/machines.h"
#include "common/source_file.h"

namespace zymdb::collect {
namespace {

constexpr char kList[] =
    "# a comment\n"
    "\n"
    "15b3  Mellanox Technologies\n"
    "\ta2d6  MT42822 BlueField-2\n"
    "\t\t15b3 0051  A card of its own name\n"
    "8086  Intel Corporation\n"
    "\t1521  I350 Gigabit Network Connection\n"
    "1af4  Red Hat, Inc.\n"
    "\t1041  Virtio network device\n"
    "1a03  ASPEED Technology, Inc.\n"
    "\t2000  ASPEED Graphics Family\n"
    "1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
    "\t67df  Ellesmere\n"
    "C 02  Network controller\n"
    "\t00  Ethernet controller\n"
    "\t\t01  an interface\n"
    "C 03  Display controller\n";

TEST(PciIds, KnowsNamesInWhateverOrderTheyStand) {
  const PciIds ids{"8086  Last\n\t0002  B\n\t0001  A\n0001  First\n8086  Again\n\t0001  Another\n"};
  EXPECT_EQ(ids.vendor(0x8086), "Last");
  EXPECT_EQ(ids.vendor(0x0001), "First");
  EXPECT_EQ(ids.device(0x8086, 1), "A");
  EXPECT_EQ(ids.device(0x8086, 2), "B");
  EXPECT_EQ(ids.device(0x8086, 3), "");
}

TEST(PciIds, NamesVendorsDevicesSubsystemsAndClasses) {
  const PciIds ids{kList};
  EXPECT_EQ(ids.vendor(0x15b3), "Mellanox Technologies");
  EXPECT_EQ(ids.device(0x15b3, 0xa2d6), "MT42822 BlueField-2");
  EXPECT_EQ(ids.subsystem(0x15b3, 0xa2d6, 0x15b3, 0x0051), "A card of its own name");
  EXPECT_EQ(ids.base_class(0x02), "Network controller");
  EXPECT_EQ(ids.subclass(0x02, 0x00), "Ethernet controller");
}

TEST(PciIds, GivesNoNameToWhatIsNotListed) {
  const PciIds ids{kList};
  EXPECT_EQ(ids.vendor(0xdead), "");
  EXPECT_EQ(ids.device(0x8086, 0xa2d6), "");
  EXPECT_EQ(ids.subsystem(0x8086, 0x1521, 0x15b3, 0x0051), "");
  EXPECT_EQ(ids.subclass(0x03, 0x00), "");
  EXPECT_EQ(ids.subclass(0x02, 0x01), "") << "an interface is no subclass";
  EXPECT_EQ(PciIds().vendor(0x8086), "");
}

TEST(PciIds, SkipsLinesOfNoForm) {
  const PciIds ids{
      "garbage\n\tmore\n\t\tand more\nzzzz  no number\n\t1521  orphan\n8086  Intel\n\t1521  I350"};
  EXPECT_EQ(ids.vendor(0x8086), "Intel");
  EXPECT_EQ(ids.device(0x8086, 0x1521), "I350") << "the last line may lack its end";
  EXPECT_EQ(PciIds{"\n"}.vendor(0), "");
}

TEST(PciIds, CopiesKeepTheirNames) {
  PciIds copy;
  {
    const PciIds ids{kList};
    copy = ids;
  }
  EXPECT_EQ(copy.vendor(0x8086), "Intel Corporation");
}

TEST(PciIds, RefusesAFileThatIsNotThere) {
  EXPECT_THROW(PciIds::load("/nowhere/pci.ids"), SourceError);
}

TEST(CardName, IsTheSubsystemsNameWhereKnown) {
  EXPECT_EQ(card_name(PciIds{kList}, 0x15b3, 0xa2d6, 0x15b3, 0x0051), "A card of its own name");
}

TEST(CardName, IsElseVendorWithoutLegalFormAndDevice) {
  const PciIds ids{kList};
  EXPECT_EQ(card_name(ids, 0x8086, 0x1521, 0, 0), "Intel I350 Gigabit Network Connection");
  EXPECT_EQ(card_name(ids, 0x15b3, 0xa2d6, 1, 1), "Mellanox MT42822 BlueField-2");
  EXPECT_EQ(card_name(ids, 0x1af4, 0x1041, 0, 0), "Red Hat Virtio network device");
  EXPECT_EQ(card_name(ids, 0x1002, 0x67df, 0, 0), "Advanced Micro Devices Ellesmere");
}

TEST(CardName, SaysTheVendorOnceWhereTheDeviceHasIt) {
  EXPECT_EQ(card_name(PciIds{kList}, 0x1a03, 0x2000, 0, 0), "ASPEED Graphics Family");
}

TEST(CardName, IsTheNumbersWithoutAName) {
  EXPECT_EQ(card_name(PciIds(), 0x15b3, 0xa2d6, 0x15b3, 0x0051), "PCI device 15b3:a2d6");
  EXPECT_EQ(card_name(PciIds{kList}, 0x15b3, 0x0001, 0, 0), "PCI device 15b3:0001");
}

TEST(CardName, HasAtMost128Bytes) {
  const PciIds ids{"8086  Intel\n\t1521  " + std::string(300, 'x') + "\n"};
  EXPECT_EQ(card_name(ids, 0x8086, 0x1521, 0, 0).size(), 128U);
}

}  // namespace
}  // namespace zymdb::collect
