#include "client/engine/mariadb/pending_rows.h"

namespace zymdb::client::mariadb {
namespace {

// A server takes packets of 16 MiB where nobody told it otherwise.
constexpr size_t kMostBytes = size_t{1} << 20;
constexpr size_t kBytesOfValue = 16;

}  // namespace

size_t PendingRows::size_of(std::span<const Argument> row) {
  size_t size = row.size() * kBytesOfValue;
  for (const Argument& value : row) size += value.text.size();
  return size;
}

bool PendingRows::takes(const std::string& sql, size_t size) const {
  return (empty() || sql == sql_) && size_ + size <= kMostBytes;
}

void PendingRows::add(const std::string& sql, std::span<const Argument::Type> types,
                      std::span<const Argument> row) {
  if (empty()) {
    sql_ = sql;
    types_.assign(types.begin(), types.end());
  }
  size_ += size_of(row);
  for (const Argument& value : row) {
    Argument& kept = values_.emplace_back(value);
    if (!value.text.empty()) kept.text = texts_.emplace_back(value.text);
  }
}

Failure PendingRows::send(Connection& connection) {
  if (empty()) return {};
  PendingRows gone;
  std::swap(gone, *this);
  return connection.run_rows(gone.sql_, gone.types_, gone.values_);
}

}  // namespace zymdb::client::mariadb
