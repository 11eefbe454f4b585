#include "client/arena.h"

#include <algorithm>

namespace zymdb::client {

// Blocks that were filled before come first; what is too large for the next of them gets one of its own
// before it.
void Arena::open_block(size_t size) {
  if (open_blocks_ == blocks_.size() || blocks_[open_blocks_].size < size) {
    const size_t larger = std::max(size, kBlockSize);
    Block block{std::make_unique_for_overwrite<std::byte[]>(larger), larger};
    blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(open_blocks_), std::move(block));
    capacity_ += larger;
  }
  const Block& block = blocks_[open_blocks_++];
  next_ = block.memory.get();
  end_ = next_ + block.size;
}

void Arena::clear() {
  open_blocks_ = 0;
  next_ = end_ = nullptr;
  used_ = 0;
}

}  // namespace zymdb::client
