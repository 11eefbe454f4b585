// The connector type table: what a slot's or card's connector is called.
#ifndef ZYMDB_SRC_PCI_CONNECTOR_TYPE_H
#define ZYMDB_SRC_PCI_CONNECTOR_TYPE_H

#include <cstdint>

namespace zymdb {

constexpr uint16_t kConnectorPciExpress = 0x12;
constexpr uint16_t kConnectorOnboard = 0x8004;

const char* connector_type_name(uint16_t code);

}  // namespace zymdb

#endif
