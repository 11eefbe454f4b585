#include "documents/watcher.h"

#include <chrono>
#include <utility>

#include "common/client_extensions.h"

namespace zymdb::documents {
namespace {

int64_t now_in_milliseconds() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

}  // namespace

Watcher::Watcher(std::vector<RecordType> types, const DifferenceOptions& options)
    : types_(std::move(types)), options_(options), last_(read_document(types_)) {}

bool Watcher::has_news() const {
  const auto generation = inventory_generation();
  return !generation || generation != last_.generation;
}

Event Watcher::look() {
  Document now = read_document(types_);
  Event event{now.generation.value_or(0), now_in_milliseconds(), last_.generation == 0,
              difference(last_, now, options_)};
  last_ = std::move(now);
  return event;
}

}  // namespace zymdb::documents
