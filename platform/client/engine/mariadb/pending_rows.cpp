#include "client/engine/mariadb/pending_rows.h"

#include <utility>

namespace zymdb::client::mariadb {
namespace {

// A statement takes 65,535 places, and a server packets of 16 MiB where nobody told it otherwise.
constexpr size_t kMostValues = 30'000;
constexpr size_t kMostBytes = size_t{1} << 20;

size_t size_of(std::span<const Argument> row) {
  size_t size = 0;
  for (const Argument& value : row) size += value.text.size();
  return size;
}

}  // namespace

bool PendingRows::takes(const std::string& insert, std::span<const Argument> row) const {
  return (values_.empty() || insert == insert_) && values_.size() + row.size() <= kMostValues &&
         size_ + size_of(row) <= kMostBytes;
}

void PendingRows::add(const std::string& insert, std::span<const Argument> row) {
  insert_ = insert;
  width_ = row.size();
  size_ += size_of(row);
  for (const Argument& value : row) {
    Argument& kept = values_.emplace_back(value);
    if (!value.text.empty()) kept.text = texts_.emplace_back(value.text);
  }
}

Failure PendingRows::send(Connection& connection) {
  if (values_.empty()) return {};
  const PendingRows gone = std::exchange(*this, {});
  const std::string row = places(gone.width_);
  std::string sql = gone.insert_ + row;
  for (size_t sent = gone.width_; sent < gone.values_.size(); sent += gone.width_)
    sql.append(",").append(row);
  return connection.run_once(sql, gone.values_);
}

std::string places(size_t width) {
  std::string text = "(";
  for (size_t i = 0; i < width; ++i) text += i == 0 ? "?" : ",?";
  return text + ")";
}

}  // namespace zymdb::client::mariadb
