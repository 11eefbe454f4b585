// A list that grows element by element and never throws.
#ifndef ZYMDB_SRC_DB_GROWING_LIST_H
#define ZYMDB_SRC_DB_GROWING_LIST_H

#include <cstdlib>
#include <span>
#include <type_traits>

#include "db/rows.h"

namespace zymdb {

template <class T>
class GrowingList {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  // False when there is no memory for it; the list is then as it was.
  bool append(const T& element) {
    if (count_ == capacity_ && !grow()) return false;
    elements_[count_++] = element;
    return true;
  }

  std::span<const T> elements() const { return {elements_.get(), count_}; }

 private:
  bool grow() {
    const size_t larger = capacity_ == 0 ? 16 : capacity_ * 2;
    void* const memory = std::realloc(elements_.get(), larger * sizeof(T));
    if (memory == nullptr) return false;
    elements_.release();
    elements_.reset(static_cast<T*>(memory));
    capacity_ = larger;
    return true;
  }

  CallerArray<T> elements_;
  size_t count_ = 0;
  size_t capacity_ = 0;
};

}  // namespace zymdb

#endif
