// The controller's platform tables: what kind of server this controller sits in.
#ifndef ZYMDB_SRC_PLATFORM_PLATFORM_TABLES_H
#define ZYMDB_SRC_PLATFORM_PLATFORM_TABLES_H

#include <cstddef>
#include <cstdint>

extern "C" {

struct ptables_t {
  void* data;
  size_t size;
};

// The platform's own entry. Bit 15 of word[2]: built on AMD processors.
struct ptables_platform_t {
  uint32_t word[7];
};

int ptables_from_ram(ptables_t* tables);
int ptables_lookup_platform_direct(const ptables_t* tables, ptables_platform_t* platform);
void ptables_free(ptables_t* tables);

}  // extern "C"

#endif
