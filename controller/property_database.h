/**
 * Platform properties by path name, which a controller provides.
 */
#ifndef ZYMDB_CONTROLLER_PROPERTY_DATABASE_H
#define ZYMDB_CONTROLLER_PROPERTY_DATABASE_H

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Reads a 32-bit property.
 *
 * @param path   the property's name, as "/dc/votc/dm/planar/0/bp/1/bay_no_e".
 * @param value  set on success, untouched otherwise.
 * @return 0 on success; any other status when there is no such property or it cannot be read.
 */
int propdb_get_dword(const char* path, unsigned int* value);

/** As propdb_get_dword, for an 8-bit property. */
int propdb_get_byte(const char* path, unsigned char* value);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
