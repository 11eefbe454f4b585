#include "collect/sources/pci/pci_vpd.h"

#include <gtest/gtest.h>

#include <string>

namespace zymdb::collect {
namespace {

std::string large(uint8_t tag, const std::string& content) {
  std::string bytes;
  bytes += static_cast<char>(tag);
  bytes += static_cast<char>(content.size() & 0xFF);
  bytes += static_cast<char>(content.size() >> 8);
  return bytes + content;
}

std::string field(const std::string& keyword, const std::string& content) {
  return keyword + static_cast<char>(content.size()) + content;
}

// Vital product data with a correct checksum.
std::string card(const std::string& fields) {
  std::string data = large(0x82, "A network card") + large(0x90, fields + field("RV", std::string(3, '\0')));
  const size_t at = data.size() - 3;
  data[at] = static_cast<char>(-checksum(as_bytes(data)));
  return data + large(0x91, field("RW", "free")) + "\x78";
}

const std::string kFields = field("PN", "MCX623106AN") + field("EC", "A5") + field("SN", "MT2045X00001 ") +
                            field("MN", "15b3") + field("V0", "PCIeGen4 x16") + field("FN", "0001");

TEST(PciVpd, ReadsTheReadOnlyFields) {
  const auto vpd = parse_pci_vpd(as_bytes(card(kFields)));
  ASSERT_TRUE(vpd);
  EXPECT_EQ(vpd->product_name, "A network card");
  EXPECT_EQ(vpd->part_number, "MCX623106AN");
  EXPECT_EQ(vpd->serial_number, "MT2045X00001");
  EXPECT_EQ(vpd->manufacturer, "15b3");
  EXPECT_EQ(vpd->fru_number, "0001");
  EXPECT_FALSE(vpd->model);
  EXPECT_FALSE(vpd->empty());
}

TEST(PciVpd, TakesPlaceholdersForUnknown) {
  const auto vpd = parse_pci_vpd(as_bytes(card(field("SN", "N/A"))));
  ASSERT_TRUE(vpd);
  EXPECT_FALSE(vpd->serial_number);
}

TEST(PciVpd, IsEmptyWhenNoKnownFieldIsThere) {
  const auto vpd = parse_pci_vpd(as_bytes(large(0x90, field("V0", "x")) + "\x78"));
  ASSERT_TRUE(vpd);
  EXPECT_TRUE(vpd->empty());
}

TEST(PciVpd, BelievesNothingWithAWrongChecksum) {
  std::string data = card(kFields);
  data[5] ^= 1;
  EXPECT_FALSE(parse_pci_vpd(as_bytes(data)));
}

TEST(PciVpd, BelievesNoPrefix) {
  const std::string whole = card(kFields);
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(parse_pci_vpd(as_bytes(whole).first(size))) << size;
  }
}

TEST(PciVpd, BelievesNoFieldThatLeavesItsResource) {
  std::string fields = field("SN", "1234");
  fields[2] = 5;
  EXPECT_FALSE(parse_pci_vpd(as_bytes(large(0x90, fields) + "\x78")));
  EXPECT_FALSE(parse_pci_vpd(as_bytes(large(0x90, "SN") + "\x78")));
  EXPECT_FALSE(parse_pci_vpd(as_bytes(large(0x90, field("RV", "")) + "\x78")));
}

TEST(PciVpd, EndsOnAnyBytes) {
  unsigned refused = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    std::string bytes(64, '\0');
    uint32_t state = seed * 2654435761U + 1;
    for (char& byte : bytes) {
      state = state * 1664525U + 1013904223U;
      byte = static_cast<char>(state >> 24);
    }
    refused += !parse_pci_vpd(as_bytes(bytes));
  }
  EXPECT_GT(refused, 1000U);
}

}  // namespace
}  // namespace zymdb::collect
