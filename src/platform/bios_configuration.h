// The BIOS configuration manager: hands new adapter setting values to the host's firmware.
#ifndef ZYMDB_SRC_PLATFORM_BIOS_CONFIGURATION_H
#define ZYMDB_SRC_PLATFORM_BIOS_CONFIGURATION_H

#include <cstdint>

extern "C" {

struct cmr_attribute_request_t {
  uint32_t status;  // 0 on the way in; the manager writes the outcome
  uint32_t kind;
  const char* name;
  const char* value;
  uint8_t reserved[260];  // the manager's own
};

// A session is opened before and closed after each set.
int cmr_api_initialize(void);
int cmr_set_bios_attribute_value(cmr_attribute_request_t* requests, unsigned int count);
int cmr_api_uninitialize(void);

}  // extern "C"

// The block is 276 bytes where pointers are 32 bits wide.
static_assert(sizeof(void*) != 4 || sizeof(cmr_attribute_request_t) == 276);

#endif
