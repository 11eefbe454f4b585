/* The controller's other interfaces, for a program that has none of them: no platform tables, no properties,
 * and a BIOS configuration manager that refuses. */
#include <controller/bios_configuration.h>
#include <controller/platform_tables.h>
#include <controller/property_database.h>

enum { NOT_HERE = 1 };

int ptables_from_ram(ptables_t* tables) {
  *tables = (ptables_t){0};
  return NOT_HERE;
}

int ptables_lookup_platform_direct(const ptables_t* tables, ptables_platform_t* platform) {
  (void)tables, (void)platform;
  return NOT_HERE;
}

void ptables_free(ptables_t* tables) {
  (void)tables;
}

int propdb_get_dword(const char* path, unsigned int* value) {
  (void)path, (void)value;
  return NOT_HERE;
}

int propdb_get_byte(const char* path, unsigned char* value) {
  (void)path, (void)value;
  return NOT_HERE;
}

int cmr_api_initialize(void) {
  return NOT_HERE;
}

int cmr_set_bios_attribute_value(cmr_attribute_request_t* requests, unsigned int count) {
  (void)requests, (void)count;
  return NOT_HERE;
}

int cmr_api_uninitialize(void) {
  return 0;
}
