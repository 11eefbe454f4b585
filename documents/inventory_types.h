// What a whole inventory consists of.
#ifndef ZYMDB_DOCUMENTS_INVENTORY_TYPES_H
#define ZYMDB_DOCUMENTS_INVENTORY_TYPES_H

#include <string>
#include <vector>

#include "records/record.h"

namespace zymdb::documents {

// Every record type that the inventory itself holds, in the order of reading; what is told from the properties
// beside it is not its own. `names_file` is the list of PCI names.
std::vector<records::RecordType> inventory_types(const std::string& names_file);

}  // namespace zymdb::documents

#endif
