/* A module of no version that any client has. */
#include <stddef.h>
#include <stdint.h>

struct {
  uint32_t interface;
  const char* version;
  void* start;
} zymdb_engine_module = {0xFFFFFFFF, "0", NULL};
