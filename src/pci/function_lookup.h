// Where a PCI function sits and what kind of hardware it belongs to.
#ifndef ZYMDB_SRC_PCI_FUNCTION_LOOKUP_H
#define ZYMDB_SRC_PCI_FUNCTION_LOOKUP_H

#include <cstdint>

#include "controller/database_client.h"

namespace zymdb {

constexpr uint32_t kNotLookedUp = 2;

// What the lookup tells, preset to what stands for one that has not run.
struct FunctionPlace {
  uint8_t hardware_type = ZYMDB_HARDWARE_PCI;
  uint32_t location = kNotLookedUp;
};

// Looks the function up in PCIs; an unknown function leaves `place` as it is, with status 0.
int look_up_place(_zym_db_handle_t* handle, unsigned int funkey, FunctionPlace& place);

}  // namespace zymdb

#endif
