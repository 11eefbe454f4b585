#include "pci/slot_type.h"

#include "db/code_text.h"

namespace zymdb {
namespace {

constexpr CodeText kSlotTypes[] = {
    {0x01, "Other"},
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
    {0xBD, "PCI-E Gen 4 x16"},
};

}  // namespace

const char* slot_type_name(uint16_t code) {
  return text_of(kSlotTypes, code);
}

}  // namespace zymdb
