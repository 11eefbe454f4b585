#include "service/inventory/current.h"

#include <utility>

#include "common/client_extensions.h"

namespace zymdb::service {

Current::Current(std::vector<documents::RecordType> types) : types_(std::move(types)) {}

Current::DocumentPtr Current::get() {
  const auto generation = inventory_generation();
  const std::lock_guard lock(mutex_);
  if (last_ == nullptr || !generation || last_->generation != generation)
    last_ = std::make_shared<const documents::Document>(documents::read_document(types_));
  return last_;
}

}  // namespace zymdb::service
