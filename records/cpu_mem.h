// Processors and memory modules.
#ifndef ZYMDB_RECORDS_CPU_MEM_H
#define ZYMDB_RECORDS_CPU_MEM_H

#include "records/record.h"

namespace zymdb::records {

RecordType processors();
RecordType memory_modules();

}  // namespace zymdb::records

#endif
