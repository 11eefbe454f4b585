// The rows that describe processors and their sockets.
#ifndef ZYMDB_COLLECT_PROCESSOR_ROWS_H
#define ZYMDB_COLLECT_PROCESSOR_ROWS_H

#include <vector>

#include "smbios_decode.h"
#include "table_content.h"

namespace zymdb::collect {

// Processor: one row per socket.
TableContent processor_rows(const std::vector<SmbiosProcessor>& processors);

}  // namespace zymdb::collect

#endif
