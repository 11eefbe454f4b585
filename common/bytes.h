// Bounds-checked access to bytes that somebody else wrote.
#ifndef ZYMDB_COMMON_BYTES_H
#define ZYMDB_COMMON_BYTES_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <span>
#include <string_view>

namespace zymdb {

using Bytes = std::span<const uint8_t>;

// The part of `bytes` from `offset` on, `count` bytes at most; empty where there are none.
inline Bytes slice(Bytes bytes, size_t offset, size_t count = std::dynamic_extent) {
  if (offset >= bytes.size()) return {};
  const size_t rest = bytes.size() - offset;
  return bytes.subspan(offset, count < rest ? count : rest);
}

// The little-endian number at `offset`, when all of it is there.
template <std::unsigned_integral T>
std::optional<T> little_endian(Bytes bytes, size_t offset) {
  const Bytes field = slice(bytes, offset, sizeof(T));
  if (field.size() < sizeof(T)) return std::nullopt;
  uint64_t value = 0;
  for (size_t i = sizeof(T); i-- > 0;) value = value << 8 | field[i];
  return static_cast<T>(value);
}

// The sum of all bytes, modulo 256.
inline uint8_t checksum(Bytes bytes) {
  return static_cast<uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

inline std::string_view as_text(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline Bytes as_bytes(std::string_view text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

}  // namespace zymdb

#endif
