// The connector, slot and package type tables, over every code that their 16 bits can hold.
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "pci/connector_type.h"
#include "pci/slot_type.h"
#include "support/scripted_client.h"
#include "zymdb_pci.h"

namespace {

using Texts = std::map<unsigned, std::string>;

// Every code has the text listed for it, and "Unknown" when none is.
template <class TextOf>
void expect_texts(const Texts& texts, TextOf text_of) {
  for (unsigned code = 0; code <= 0xFFFF; ++code) {
    const auto listed = texts.find(code);
    ASSERT_EQ(text_of(code), listed != texts.end() ? listed->second : "Unknown") << code;
  }
}

TEST(ConnectorTypes, EveryCodeHasItsText) {
  expect_texts({{2, "RS232"},
                {3, "BNC"},
                {4, "RJ11"},
                {5, "RJ45"},
                {6, "DB9"},
                {7, "Slot"},
                {8, "SCSI High Density"},
                {9, "SCSI Low Density"},
                {10, "Ribbon"},
                {11, "AUI"},
                {12, "Fiber SC"},
                {13, "Fiber ST"},
                {14, "FDDI-MIC"},
                {15, "Fiber-RTMJ"},
                {16, "PCI"},
                {17, "PCI-X"},
                {18, "PCI-E"},
                {19, "PCI-E x1"},
                {20, "PCI-E x2"},
                {21, "PCI-E x4"},
                {22, "PCI-E x8"},
                {23, "PCI-E x16"},
                {24, "PCI-E x32"},
                {25, "PCI-E x64"},
                {32768, "Corvex Mezzanine Connector"},
                {32769, "Corvex Mid-Mezzanine Connector"},
                {32770, "Tallis CFFh Connector"},
                {32771, "Tallis CIOv Connector"},
                {32772, "Onboard"},
                {32773, "ML2"},
                {32774, "OCP"}},
               [](unsigned code) { return zymdb::connector_type_name(static_cast<uint16_t>(code)); });
}

TEST(SlotTypes, EveryCodeHasItsText) {
  expect_texts({{0x01, "Other"},
                {0x03, "ISA"},
                {0x04, "MCA"},
                {0x05, "EISA"},
                {0x06, "PCI"},
                {0x07, "PC Card (PCMCIA)"},
                {0x08, "VL-VESA"},
                {0x09, "Proprietary"},
                {0x0A, "Processor Card Slot"},
                {0x0B, "Proprietary Memory Card Slot"},
                {0x0C, "I/O Riser Card Slot"},
                {0x0D, "NuBus"},
                {0x0E, "PCI - 66MHz Capable"},
                {0x0F, "AGP"},
                {0x10, "AGP 2X"},
                {0x11, "AGP 4X"},
                {0x12, "PCI-X"},
                {0x13, "AGP 8X"},
                {0x14, "M.2 A-key"},
                {0x15, "M.2 E-key"},
                {0x16, "M.2 B-key"},
                {0x17, "M.2 M-key"},
                {0xA0, "PC-98/C20"},
                {0xA1, "PC-98/C24"},
                {0xA2, "PC-98/E"},
                {0xA3, "PC-98/Local Bus"},
                {0xA4, "PC-98/Card"},
                {0xA5, "PCI-E"},
                {0xA6, "PCI-E x1"},
                {0xA7, "PCI-E x2"},
                {0xA8, "PCI-E x4"},
                {0xA9, "PCI-E x8"},
                {0xAA, "PCI-E x16"},
                {0xAB, "PCI-E Gen 2"},
                {0xAC, "PCI-E Gen 2 x1"},
                {0xAD, "PCI-E Gen 2 x2"},
                {0xAE, "PCI-E Gen 2 x4"},
                {0xAF, "PCI-E Gen 2 x8"},
                {0xB0, "PCI-E Gen 2 x16"},
                {0xB1, "PCI-E Gen 3"},
                {0xB2, "PCI-E Gen 3 x1"},
                {0xB3, "PCI-E Gen 3 x2"},
                {0xB4, "PCI-E Gen 3 x4"},
                {0xB5, "PCI-E Gen 3 x8"},
                {0xB6, "PCI-E Gen 3 x16"},
                {0xB8, "PCI-E Gen 4"},
                {0xB9, "PCI-E Gen 4 x1"},
                {0xBA, "PCI-E Gen 4 x2"},
                {0xBB, "PCI-E Gen 4 x4"},
                {0xBC, "PCI-E Gen 4 x8"},
                {0xBD, "PCI-E Gen 4 x16"}},
               [](unsigned code) { return zymdb::slot_type_name(static_cast<uint16_t>(code)); });
}

class PackageTypes : public scripted::ClientTest {};

TEST_F(PackageTypes, EveryCodeHasItsText) {
  expect_texts({{1, "Other"},
                {2, "Rack"},
                {3, "Chassis/Frame"},
                {4, "Cross Connect/Backplane"},
                {5, "Container/Frame Slot"},
                {6, "Power Supply"},
                {7, "Fan"},
                {8, "Sensor"},
                {9, "Module/Card"},
                {10, "Port/Connector"},
                {11, "Battery"},
                {12, "Processor"},
                {13, "Memory"},
                {14, "Power Source/Generator"},
                {15, "Storage Media Package"},
                {16, "Blade"},
                {17, "Blade Expansion"},
                {32768, "Onboard"}},
               [this](unsigned code) {
                 answer({scripted::Row(0, "18", std::to_string(code), nullptr, nullptr)});
                 _ZYMDB_PCI_Misc misc{};
                 EXPECT_EQ(zymdb_get_pci_misc_info(1, &misc), ZYM_DB_STATUS_OK);
                 EXPECT_EQ(misc.PackageType, code);
                 return std::string(misc.PackageTypeName);
               });
}

}  // namespace
