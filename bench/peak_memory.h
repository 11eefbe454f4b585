/* The most memory that was ever resident in this process. */
#ifndef ZYMDB_BENCH_PEAK_MEMORY_H
#define ZYMDB_BENCH_PEAK_MEMORY_H

#include <stdio.h>
#include <string.h>

static inline void print_peak_memory(void) {
  char line[256];
  FILE* const status = fopen("/proc/self/status", "r");
  if (status == NULL) return;
  while (fgets(line, sizeof line, status) != NULL)
    if (strncmp(line, "VmHWM:", 6) == 0) fputs(line, stdout);
  fclose(status);
}

#endif
