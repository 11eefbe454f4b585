// The slot type table: what a system slot is called. Its codes are SMBIOS's, not the connector type table's.
#ifndef ZYMDB_SRC_PCI_SLOT_TYPE_H
#define ZYMDB_SRC_PCI_SLOT_TYPE_H

#include <cstdint>

namespace zymdb {

const char* slot_type_name(uint16_t code);

}  // namespace zymdb

#endif
