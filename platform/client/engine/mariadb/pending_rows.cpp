#include "client/engine/mariadb/pending_rows.h"

#include <utility>

namespace zymdb::client::mariadb {
namespace {

// A server takes packets of 16 MiB where nobody told it otherwise; a text is written with twice its length.
constexpr size_t kMostBytes = size_t{1} << 20;
constexpr size_t kBytesOfNumber = 16;

size_t size_of(std::span<const Argument> row) {
  size_t size = row.size() * kBytesOfNumber;
  for (const Argument& value : row) size += value.text.size();
  return size;
}

// As digits, so that no text is ever part of the statement.
void append_literal(const Argument& value, std::string& sql) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  if (value.type == Argument::Type::kNull) {
    sql += "NULL";
  } else if (value.type == Argument::Type::kInteger) {
    sql += std::to_string(value.integer);
  } else {
    sql += "X'";
    for (const char c : value.text) {
      const auto byte = static_cast<unsigned char>(c);
      sql += kDigits[byte >> 4];
      sql += kDigits[byte & 0xF];
    }
    sql += '\'';
  }
}

}  // namespace

bool PendingRows::may_hold(std::span<const Argument> row) {
  return size_of(row) <= kMostBytes;
}

bool PendingRows::takes(const std::string& insert, std::span<const Argument> row) const {
  return (sql_.empty() || insert == insert_) && size_ + size_of(row) <= kMostBytes;
}

void PendingRows::add(const std::string& insert, std::span<const Argument> row) {
  if (sql_.empty()) sql_ = insert_ = insert;
  size_ += size_of(row);
  if (sql_.size() != insert_.size()) sql_ += ',';
  char before = '(';
  for (const Argument& value : row) {
    sql_ += std::exchange(before, ',');
    append_literal(value, sql_);
  }
  sql_ += ')';
}

Failure PendingRows::send(Connection& connection) {
  if (sql_.empty()) return {};
  const PendingRows gone = std::exchange(*this, {});
  return connection.execute(gone.sql_);
}

}  // namespace zymdb::client::mariadb
