// Memory that grows without moving and is given up as a whole: blocks that are filled one after the other.
#ifndef ZYMDB_PLATFORM_CLIENT_ARENA_H
#define ZYMDB_PLATFORM_CLIENT_ARENA_H

#include <cstddef>
#include <memory>
#include <vector>

namespace zymdb::client {

class Arena {
 public:
  // Room for anything that is aligned as a pointer is.
  void* allocate(size_t size) {
    size = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (size > static_cast<size_t>(end_ - next_)) open_block(size);
    used_ += size;
    void* const memory = next_;
    next_ += size;
    return memory;
  }

  // Everything is gone, its memory ready for what comes.
  void clear();

  size_t used() const { return used_; }
  // Bytes that are held, used or not.
  size_t capacity() const { return capacity_; }

 private:
  static constexpr size_t kAlignment = alignof(void*);
  // Small enough for the allocator to keep them at hand.
  static constexpr size_t kBlockSize = 32 * 1024;

  struct Block {
    std::unique_ptr<std::byte[]> memory;
    size_t size;
  };

  void open_block(size_t size);

  std::vector<Block> blocks_;
  size_t open_blocks_ = 0;  // the first ones, of which the last is being filled
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  size_t used_ = 0;
  size_t capacity_ = 0;
};

}  // namespace zymdb::client

#endif
