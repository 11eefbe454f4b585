#include "service/inventory/current.h"

#include <malloc.h>

#include <utility>

#include "common/client_extensions.h"
#include "documents/inventory_types.h"

namespace zymdb::service {

Current::Current(std::string names_file)
    : names_file_(std::move(names_file)), types_(documents::inventory_types(names_file_)) {}

Current::DocumentPtr Current::get() {
  const auto generation = inventory_generation();
  const std::lock_guard lock(mutex_);
  if (last_ == nullptr || !generation || last_->generation != generation) read();
  return last_;
}

void Current::read() {
  last_ = std::make_shared<const documents::Document>(
      documents::read_document(documents::inventory_types(names_file_)));
#ifdef __GLIBC__
  // What reading took beyond the document would stay with the thread that happened to read.
  malloc_trim(0);
#endif
}

}  // namespace zymdb::service
