// Recordings that may be given to others.
#ifndef ZYMDB_COLLECT_RECORD_SANITIZER_H
#define ZYMDB_COLLECT_RECORD_SANITIZER_H

#include "collect/record/machine_copy.h"

namespace zymdb::collect {

// The copy with other serial numbers, asset tags, UUIDs and addresses: in SMBIOS tables, vital product data
// (with the checksum that belongs to it), configuration spaces, attribute files, what drivers told, and names
// of files and links. Lengths stay.
MachineCopy sanitized(const MachineCopy& copy);

}  // namespace zymdb::collect

#endif
