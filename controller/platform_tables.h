/**
 * The platform tables, which a controller provides: what kind of server it sits in.
 */
#ifndef ZYMDB_CONTROLLER_PLATFORM_TABLES_H
#define ZYMDB_CONTROLLER_PLATFORM_TABLES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A local copy of the tables. */
struct ptables_t {
  void* data;  /**< the provider's; released with ptables_free */
  size_t size; /**< bytes */
};
typedef struct ptables_t ptables_t;

/** The platform's own entry. */
struct ptables_platform_t {
  uint32_t word[7]; /**< word[2], bit 15: built on AMD processors */
};
typedef struct ptables_platform_t ptables_platform_t;

/**
 * Copies the tables.
 *
 * @param tables  filled on success, to be released with ptables_free; empty on failure.
 * @return 0, or the provider's status.
 */
int ptables_from_ram(ptables_t* tables);

/**
 * Reads the platform's own entry.
 *
 * @param tables    of ptables_from_ram.
 * @param platform  filled on success, untouched on failure.
 * @return 0, or the provider's status, also when there is no such entry.
 */
int ptables_lookup_platform_direct(const ptables_t* tables, ptables_platform_t* platform);

/** Releases the copy in `tables`. Empty tables, and null, are left alone. */
void ptables_free(ptables_t* tables);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
