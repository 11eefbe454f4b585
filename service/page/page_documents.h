// What the page is told beside the inventory, as JSON.
#ifndef ZYMDB_SERVICE_PAGE_PAGE_DOCUMENTS_H
#define ZYMDB_SERVICE_PAGE_PAGE_DOCUMENTS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "documents/document.h"
#include "service/page/recent_history.h"

namespace zymdb::service {

// For each class its fields: what they are called, mean and are to the part.
std::string fields_json(const std::vector<documents::RecordType>& types);

// For each class its parts, in their order: "name", which no other part of the class has, "place", "model",
// "vacant" where there is none, and "attention", field by field, where a value deserves a look.
std::string parts_json(const documents::Document& document);

// The newest change first.
std::string history_json(const std::vector<PastChange>& changes, std::optional<uint64_t> generation);

std::string error_json(const std::string& reason);

}  // namespace zymdb::service

#endif
