/**
 * The BIOS configuration manager, which a controller provides: it hands new values of adapter settings to the
 * host's firmware.
 */
#ifndef ZYMDB_CONTROLLER_BIOS_CONFIGURATION_H
#define ZYMDB_CONTROLLER_BIOS_CONFIGURATION_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One setting and its new value. 276 bytes where pointers are 32 bits wide. */
struct cmr_attribute_request_t {
  uint32_t status;       /**< 0 on the way in; the manager writes the outcome: 0 accepted */
  uint32_t kind;         /**< kind of the value; the library passes 0 */
  const char* name;      /**< name of the attribute, the caller's */
  const char* value;     /**< its new value, the caller's */
  uint8_t reserved[260]; /**< the manager's own; 0 on the way in */
};
typedef struct cmr_attribute_request_t cmr_attribute_request_t;

/** Opens a session. @return 0, or the manager's status. */
int cmr_api_initialize(void);

/**
 * Hands over new values, within a session.
 *
 * @param requests  `count` requests; each gets its own outcome in `status`.
 * @return 0 when all of them were accepted, else the status of the first that was not.
 */
int cmr_set_bios_attribute_value(cmr_attribute_request_t* requests, unsigned int count);

/** Closes the session. @return 0, or the manager's status. */
int cmr_api_uninitialize(void);

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(void*) != 4 || sizeof(cmr_attribute_request_t) == 276, "the manager's own layout");
#else
_Static_assert(sizeof(void*) != 4 || sizeof(cmr_attribute_request_t) == 276, "the manager's own layout");
#endif

#endif
