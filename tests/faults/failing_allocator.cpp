#include "faults/failing_allocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

// A sanitizer's allocator where there is one, else the C library's.
extern "C" {
[[gnu::weak]] void* __interceptor_malloc(size_t);
[[gnu::weak]] void* __interceptor_calloc(size_t, size_t);
[[gnu::weak]] void* __interceptor_realloc(void*, size_t);
[[gnu::weak]] void __interceptor_free(void*);
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void __libc_free(void*);
}

namespace {

thread_local bool counting = false;
thread_local int remaining = 0;  // allocations before the failing one; below 0 it has failed

constinit std::atomic<long> live_blocks{0};

bool fails() {
  return counting && remaining-- == 0;
}

void* counted(void* memory) {
  if (memory != nullptr) live_blocks.fetch_add(1, std::memory_order_relaxed);
  return memory;
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

long failing_allocator::live() {
  return live_blocks.load(std::memory_order_relaxed);
}

extern "C" {

void* malloc(size_t size) {
  if (fails()) return nullptr;
  return counted(__interceptor_malloc != nullptr ? __interceptor_malloc(size) : __libc_malloc(size));
}
void* calloc(size_t count, size_t size) {
  if (fails()) return nullptr;
  return counted(__interceptor_calloc != nullptr ? __interceptor_calloc(count, size)
                                                 : __libc_calloc(count, size));
}
void* realloc(void* memory, size_t size) {
  if (fails()) return nullptr;
  void* const moved =
      __interceptor_realloc != nullptr ? __interceptor_realloc(memory, size) : __libc_realloc(memory, size);
  return memory == nullptr ? counted(moved) : moved;
}
void free(void* memory) {
  if (memory != nullptr) live_blocks.fetch_sub(1, std::memory_order_relaxed);
  __interceptor_free != nullptr ? __interceptor_free(memory) : __libc_free(memory);
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
