#include "service/http/compression.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>

#include "common/text.h"

namespace zymdb::service {
namespace {

// Below that the headers of both are more than what is gained.
constexpr size_t kWorthwhile = 512;
// Larger ones are sent as they are: compressing them would hold up others.
constexpr size_t kTooLarge = 16 << 20;

constexpr int kWindow = 15, kWithGzipHeader = 16;

bool is_worth_it(std::string_view parameters) {
  const size_t weight = parameters.find("q=");
  return weight == std::string_view::npos ||
         parameters.substr(weight + 2).find_first_of("123456789") != std::string_view::npos;
}

}  // namespace

std::string gzip(std::string_view content) {
  constexpr int kMemory = 8, kLevel = 6;
  z_stream stream{};
  if (deflateInit2(&stream, kLevel, Z_DEFLATED, kWindow + kWithGzipHeader, kMemory, Z_DEFAULT_STRATEGY) !=
      Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, deflateEnd);
  std::string compressed(deflateBound(&stream, content.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  stream.avail_in = static_cast<uInt>(content.size());
  stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
  stream.avail_out = static_cast<uInt>(compressed.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::bad_alloc();
  compressed.resize(stream.total_out);
  compressed.shrink_to_fit();
  return compressed;
}

std::string gunzip(std::string_view compressed) {
  z_stream stream{};
  if (inflateInit2(&stream, kWindow + kWithGzipHeader) != Z_OK) throw std::bad_alloc();
  const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, inflateEnd);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
  stream.avail_in = static_cast<uInt>(compressed.size());
  std::string content;
  std::array<char, 16384> piece;
  int status = Z_OK;
  while (status == Z_OK) {
    stream.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream.avail_out = piece.size();
    status = inflate(&stream, Z_NO_FLUSH);
    content.append(piece.data(), piece.size() - stream.avail_out);
  }
  if (status != Z_STREAM_END) throw std::bad_alloc();
  return content;
}

bool accepts_gzip(std::string_view header) {
  bool any = false;
  while (!header.empty()) {
    const size_t end = std::min(header.find(','), header.size());
    const auto element = header.substr(0, end);
    header.remove_prefix(std::min(end + 1, header.size()));
    const size_t parameters = std::min(element.find(';'), element.size());
    const auto name = trimmed(element.substr(0, parameters));
    if (is_alike(name, "gzip") || is_alike(name, "x-gzip")) return is_worth_it(element.substr(parameters));
    if (name == "*") any = is_worth_it(element.substr(parameters));
  }
  return any;
}

bool is_compressible(std::string_view type) {
  type = trimmed(type.substr(0, type.find(';')));
  return type.starts_with("text/") || type.ends_with("json") || type.ends_with("xml") ||
         type.ends_with("javascript");
}

Text CompressedTexts::of(const Text& text) {
  if (text->size() < kWorthwhile || text->size() > kTooLarge) return nullptr;
  const std::weak_ptr<const std::string> key = text;
  const auto is_it = [&](const Entry& entry) {
    return !entry.text.owner_before(key) && !key.owner_before(entry.text);
  };
  {
    const std::lock_guard lock(mutex_);
    if (const auto found = std::ranges::find_if(entries_, is_it); found != entries_.end()) {
      entries_.splice(entries_.begin(), entries_, found);
      return found->compressed;
    }
  }
  auto compressed = std::make_shared<const std::string>(gzip(*text));
  if (compressed->size() >= text->size()) compressed = nullptr;
  const size_t size = compressed != nullptr ? compressed->size() : 0;
  if (size > most_bytes_ / 2) return compressed;
  const std::lock_guard lock(mutex_);
  entries_.push_front({key, compressed});
  bytes_ += size;
  while (bytes_ > most_bytes_ || entries_.size() > kMostEntries) {
    bytes_ -= entries_.back().compressed != nullptr ? entries_.back().compressed->size() : 0;
    entries_.pop_back();
  }
  return compressed;
}

size_t CompressedTexts::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

}  // namespace zymdb::service
