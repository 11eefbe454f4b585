// The machine as a whole.
#ifndef ZYMDB_RECORDS_SYSTEM_H
#define ZYMDB_RECORDS_SYSTEM_H

#include "records/record.h"

namespace zymdb::records {

RecordType system();

}  // namespace zymdb::records

#endif
