#include "client/engine/sqlite/kept_results.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <new>
#include <string_view>
#include <utility>

namespace zymdb::client::sqlite {
namespace {

constexpr size_t kBuckets = 512;
constexpr size_t kBucketSize = 8;
constexpr size_t kOverhead = 128;  // of an entry, in the list and the map

// Of the process.
std::atomic<size_t> all_bytes{0};
std::atomic<size_t> all_keepers{0};

template <class Number>
void append(std::string& key, Number number) {
  key.append(reinterpret_cast<const char*>(&number), sizeof number);
}

// Equal keys mean equal statements with equal arguments.
void write_key(uint64_t statement, std::span<const Argument> arguments, std::string& key) {
  key.clear();
  append(key, statement);
  for (const Argument& argument : arguments) {
    key.push_back(static_cast<char>(argument.type));
    if (argument.type == Argument::Type::kInteger) append(key, argument.integer);
    if (argument.type == Argument::Type::kReal) append(key, argument.real);
    append(key, argument.text.size());
    key.append(argument.text);
  }
}

}  // namespace

size_t KeptResults::Entry::size() const {
  return key.capacity() + rows.size() + kOverhead;
}

KeptResults::KeptResults(size_t limit) : limit_(limit) {
  ++all_keepers;
}

KeptResults::~KeptResults() {
  clear();
  --all_keepers;
}

void KeptResults::look(const WalHeader& header) {
  if (header == header_) return;
  clear();
  header_ = header;
  ++era_;
}

bool KeptResults::find(uint64_t statement, std::span<const Argument> arguments, Result& result) {
  write_key(statement, arguments, key_);
  hash_ = std::hash<std::string_view>()(key_);
  const auto place = places_.find(hash_);
  if (place == places_.end() || place->second->key != key_) return false;
  entries_.splice(entries_.begin(), entries_, place->second);
  result.assign(place->second->rows);
  return true;
}

// What there is no memory to keep is asked again.
bool KeptResults::offer(const Result& result) {
  try {
    return !has_come_before(hash_) || places_.contains(hash_) || keep({hash_, key_, result.rows()});
  } catch (const std::bad_alloc&) {
    clear();
    return true;
  }
}

bool KeptResults::keep(Entry entry) {
  const size_t size = entry.size();
  if (size > limit_ / 2) return true;
  if (!make_room(size)) return false;
  entries_.push_front(std::move(entry));
  size_ += size;
  all_bytes += size;
  places_.emplace(hash_, entries_.begin());
  return true;
}

// A bucket's newest comes first. What was noted under another header looks like nothing that comes now.
bool KeptResults::has_come_before(uint64_t hash) {
  if (asked_.empty()) asked_.resize(kBuckets * kBucketSize);
  const auto mark = static_cast<uint16_t>((hash >> 48) ^ (era_ * 0x9E3779B9U >> 16));
  const std::span bucket(&asked_[hash % kBuckets * kBucketSize], kBucketSize);
  if (std::ranges::find(bucket, mark) != bucket.end()) return true;
  std::ranges::copy_backward(bucket.first(kBucketSize - 1), bucket.end());
  bucket.front() = mark;
  return false;
}

bool KeptResults::make_room(size_t size) {
  while (all_bytes + size > limit_) {
    if (entries_.empty() || size_ + size <= share()) return false;
    drop_last();
  }
  return true;
}

size_t KeptResults::share() const {
  return limit_ / std::max<size_t>(all_keepers, 1);
}

void KeptResults::shrink() {
  while (size_ > share()) drop_last();
}

void KeptResults::drop_last() {
  const size_t size = entries_.back().size();
  size_ -= size;
  all_bytes -= size;
  places_.erase(entries_.back().hash);
  entries_.pop_back();
}

void KeptResults::clear() {
  if (entries_.empty()) return;
  all_bytes -= size_;
  size_ = 0;
  places_.clear();
  entries_.clear();
}

}  // namespace zymdb::client::sqlite
