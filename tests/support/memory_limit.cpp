// In test programs that link this, an allocation over 2 GiB fails, so that a client that claims billions of
// rows shows what the library does without memory.
#include <cstddef>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)

extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=2048";
}
extern "C" const char* __tsan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=2048";
}

#else

extern "C" {

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);

static const size_t kLimit = size_t{2} << 30;

void* malloc(size_t size) {
  return size > kLimit ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  return size != 0 && count > kLimit / size ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) {
  return size > kLimit ? nullptr : __libc_realloc(memory, size);
}

}  // extern "C"

#endif
