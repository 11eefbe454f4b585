#include "faults/failing_allocator.h"

#include <cstddef>
#include <cstdlib>
#include <new>

// A sanitizer's allocator where there is one, else the C library's.
extern "C" {
[[gnu::weak]] void* __interceptor_malloc(size_t);
[[gnu::weak]] void* __interceptor_calloc(size_t, size_t);
[[gnu::weak]] void* __interceptor_realloc(void*, size_t);
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
}

namespace {

thread_local bool counting = false;
thread_local int remaining = 0;  // allocations before the failing one; below 0 it has failed

bool fails() {
  return counting && remaining-- == 0;
}

}  // namespace

void failing_allocator::fail(int number) {
  remaining = number;
  counting = true;
}

bool failing_allocator::stop() {
  counting = false;
  return remaining < 0;
}

extern "C" {

void* malloc(size_t size) {
  if (fails()) return nullptr;
  return __interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  if (fails()) return nullptr;
  return __interceptor_calloc != nullptr ? __interceptor_calloc(count, size) : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) {
  if (fails()) return nullptr;
  return __interceptor_realloc != nullptr ? __interceptor_realloc(memory, size)
                                          : __libc_realloc(memory, size);
}

}  // extern "C"

void* operator new(size_t size) {
  if (void* const memory = std::malloc(size); memory != nullptr) return memory;
  throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}
void* operator new[](size_t size) {
  return operator new(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}
