// Platform properties by path name.
#ifndef ZYMDB_SRC_PLATFORM_PROPERTY_DATABASE_H
#define ZYMDB_SRC_PLATFORM_PROPERTY_DATABASE_H

extern "C" {

// 0 on success; the value is untouched otherwise.
int propdb_get_dword(const char* path, unsigned int* value);
int propdb_get_byte(const char* path, unsigned char* value);

}  // extern "C"

#endif
