// Documents as JSON: the arrays of `zymdb show … --json`, side by side in one object.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_JSON_H
#define ZYMDB_DOCUMENTS_DOCUMENT_JSON_H

#include <string>
#include <string_view>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

// What stands in front of the classes.
inline constexpr char kFormatVersionKey[] = "format_version";
inline constexpr char kZymdbVersionKey[] = "zymdb_version";
inline constexpr char kGenerationKey[] = "generation";

// An object with "format_version", "zymdb_version", "generation" (null where there is none) and an array for each
// class.
std::string to_json(const Document& document);

// What to_json() made, or a listing's own JSON. Fields that it lacks are unknown. Throws SourceError, with `name`
// for the source, for text that is cut short, of a newer version, or no such document.
Document parse_document(std::string_view text, const std::string& name, const std::vector<RecordType>& types);

}  // namespace zymdb::documents

#endif
