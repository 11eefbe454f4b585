#include "pci/connector_type.h"

#include "db/code_text.h"

namespace zymdb {
namespace {

constexpr CodeText kConnectorTypes[] = {
    {2, "RS232"},
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
    {kConnectorPciExpress, "PCI-E"},
    {19, "PCI-E x1"},
    {20, "PCI-E x2"},
    {21, "PCI-E x4"},
    {22, "PCI-E x8"},
    {23, "PCI-E x16"},
    {24, "PCI-E x32"},
    {25, "PCI-E x64"},
    {0x8000, "Corvex Mezzanine Connector"},
    {0x8001, "Corvex Mid-Mezzanine Connector"},
    {0x8002, "Tallis CFFh Connector"},
    {0x8003, "Tallis CIOv Connector"},
    {kConnectorOnboard, "Onboard"},
    {0x8005, "ML2"},
    {0x8006, "OCP"},
};

}  // namespace

const char* connector_type_name(uint16_t code) {
  return text_of(kConnectorTypes, code);
}

}  // namespace zymdb
