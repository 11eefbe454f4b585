// Expectations drafted from a server that is as it should be.
#ifndef ZYMDB_DOCUMENTS_DRAFT_H
#define ZYMDB_DOCUMENTS_DRAFT_H

#include <string>

#include "documents/document.h"

namespace zymdb::documents {

// A file of expectations that the document meets: how many parts of each class, which models in which places,
// of which firmware at least, all of them healthy, with full links and told apart, but for those that are
// not. Serial numbers are not expected, so that the file holds for other machines of the same build.
std::string draft(const Document& document);

}  // namespace zymdb::documents

#endif
