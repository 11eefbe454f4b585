// Inventories, snapshots and exports as documents.
#ifndef ZYMDB_TOOL_FILES_DOCUMENT_FILE_H
#define ZYMDB_TOOL_FILES_DOCUMENT_FILE_H

#include <string>
#include <vector>

#include "documents/document.h"

namespace zymdb::tool {

// The document of an inventory, a snapshot or an export; of standard input for "-". Opens an inventory in
// place of the one that is open. Throws WrongInput for what is none of these, or cannot be read.
documents::Document load_document(const std::string& path, const std::vector<records::RecordType>& types);

// The same of the inventory that the command line or the environment names, which may be an export as well.
documents::Document load_chosen_document(const std::vector<records::RecordType>& types);

}  // namespace zymdb::tool

#endif
