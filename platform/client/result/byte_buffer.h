// Bytes that are appended. Growing and emptying keep the memory.
#ifndef ZYMDB_PLATFORM_CLIENT_RESULT_BYTE_BUFFER_H
#define ZYMDB_PLATFORM_CLIENT_RESULT_BYTE_BUFFER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

namespace zymdb::client {

class ByteBuffer {
 public:
  // Makes room for so many bytes more. What was appended may move.
  void reserve(size_t size) {
    if (size > capacity_ - size_) grow(size_ + size);
  }
  // Into room that was made before.
  template <class Value>
  requires std::is_trivially_copyable_v<Value>
  void append(Value value) {
    std::memcpy(bytes_.get() + size_, &value, sizeof value);
    size_ += sizeof value;
  }
  void append(std::string_view bytes) {
    if (!bytes.empty()) std::memcpy(bytes_.get() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
  }
  void skip(size_t size) { size_ += size; }
  template <class Value>
  void replace(size_t place, Value value) {
    std::memcpy(bytes_.get() + place, &value, sizeof value);
  }
  void clear() { size_ = 0; }

  const uint8_t* data() const { return bytes_.get(); }
  size_t size() const { return size_; }
  size_t capacity() const { return capacity_; }

 private:
  static constexpr size_t kLeast = 4096;

  struct Free {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };

  // Not a vector: the system moves large memory to where there is more without copying it.
  void grow(size_t needed) {
    const size_t capacity = std::max({needed, 2 * capacity_, kLeast});
    auto* const moved = static_cast<uint8_t*>(std::realloc(bytes_.get(), capacity));
    if (moved == nullptr) throw std::bad_alloc();
    static_cast<void>(bytes_.release());
    bytes_.reset(moved);
    capacity_ = capacity;
  }

  std::unique_ptr<uint8_t, Free> bytes_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace zymdb::client

#endif
