// The rows that describe processors and their sockets.
#ifndef ZYMDB_COLLECT_ROWS_PROCESSOR_ROWS_H
#define ZYMDB_COLLECT_ROWS_PROCESSOR_ROWS_H

#include <vector>

#include "collect/rows/table_content.h"
#include "collect/sources/smbios/smbios_decode.h"

namespace zymdb::collect {

// Processor: one row per socket.
TableContent processor_rows(const std::vector<SmbiosProcessor>& processors);

}  // namespace zymdb::collect

#endif
