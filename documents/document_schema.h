// What the JSON of a whole inventory looks like, for those who check it.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_SCHEMA_H
#define ZYMDB_DOCUMENTS_DOCUMENT_SCHEMA_H

#include <string>
#include <vector>

#include "records/record.h"

namespace zymdb::documents {

// The JSON Schema (draft 2020-12) of what to_json() makes of a document with these classes. Every class and every
// field is there, each with its meaning, and no other is.
std::string json_schema(const std::vector<records::RecordType>& types);

}  // namespace zymdb::documents

#endif
