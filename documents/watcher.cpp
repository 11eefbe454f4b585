#include "documents/watcher.h"

#include <utility>

#include "common/client_extensions.h"

namespace zymdb::documents {

Watcher::Watcher(std::vector<RecordType> types, const DifferenceOptions& options)
    : types_(std::move(types)), options_(options), last_(read_document(types_)) {}

bool Watcher::has_news() const {
  const auto generation = inventory_generation();
  return !generation || generation != last_.generation;
}

std::vector<Change> Watcher::look() {
  Document now = read_document(types_);
  auto changes = difference(last_, now, options_);
  last_ = std::move(now);
  return changes;
}

}  // namespace zymdb::documents
