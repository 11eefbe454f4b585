// How many rows the updates of this program have rewritten.
#ifndef ZYMDB_TESTS_PCI_SETTINGS_REWRITTEN_ROWS_H
#define ZYMDB_TESTS_PCI_SETTINGS_REWRITTEN_ROWS_H

#include <cstdint>

int64_t rewritten_rows();
void reset_rewritten_rows();

#endif
