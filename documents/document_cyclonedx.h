// Documents as hardware bills of materials: CycloneDX 1.6, as JSON.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_CYCLONEDX_H
#define ZYMDB_DOCUMENTS_DOCUMENT_CYCLONEDX_H

#include <string>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

// The machine is the bill's subject; its parts are components, firmware and vacant positions as such, the former
// included and the latter not. A PCI function is within the card that it is a function of, and what belongs to a
// function within that. Every value that stays is a property "zymdb:CLASS:FIELD"; how a part is at the moment (a
// link, a temperature) and what is no part (settings, logical ports) belongs to no bill of materials.
//
// A machine has one serial number, made of what identifies it, and its bill the generation for a version; where
// nothing identifies it, the same content has one number. The types are those of the document.
std::string to_cyclonedx(const Document& document, const std::vector<RecordType>& types);

}  // namespace zymdb::documents

#endif
