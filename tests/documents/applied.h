// Changes, made to a document.
#ifndef ZYMDB_TESTS_DOCUMENTS_APPLIED_H
#define ZYMDB_TESTS_DOCUMENTS_APPLIED_H

#include <algorithm>
#include <string>
#include <vector>

#include "documents/difference.h"

namespace zymdb::documents {

// The document that the changes make of another.
inline Document applied(Document document, const std::vector<Change>& changes) {
  const auto parts_of = [&](const std::string& name) -> std::vector<Part>& {
    return std::ranges::find(document.classes, name, &PartClass::name)->parts;
  };
  for (const Change& change : changes) {
    auto& parts = parts_of(change.part_class);
    if (const auto found = std::ranges::find(parts, change.before); found != parts.end()) parts.erase(found);
  }
  for (const Change& change : changes) {
    if (!change.after.empty()) parts_of(change.part_class).push_back(change.after);
  }
  return document;
}

}  // namespace zymdb::documents

#endif
