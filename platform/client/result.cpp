#include "client/result.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>

#include "client/catalog.h"
#include "zymdb_db.h"

namespace zymdb::client {
namespace {

constexpr size_t kSmallResult = 512 * 1024;

}  // namespace

void Result::start(ColumnNames names, size_t limit) {
  names_ = std::move(names);
  columns_ = static_cast<uint32_t>(names_->size());
  limit_ = std::min<size_t>(limit, std::numeric_limits<uint32_t>::max());
  memory_.clear();
  rows_ = 0;
  first_ = last_ = nullptr;
  next_found_ = 0;
  reset();
}

bool Result::begin_row() {
  if (memory_.used() > limit_) return false;
  begun_ = static_cast<Row*>(memory_.allocate(sizeof(Row) + columns_ * sizeof(Cell)));
  next_cell_ = begun_->cells();
  return true;
}

void Result::end_row() {
  begun_->next = nullptr;
  if (last_ == nullptr)
    first_ = next_ = begun_;
  else
    last_->next = begun_;
  last_ = begun_;
  ++rows_;
}

bool Result::add_bytes(Type type, std::string_view value) {
  if (value.size() > limit_ || memory_.used() > limit_) return false;
  char* const bytes = static_cast<char*>(memory_.allocate(value.size()));
  if (!value.empty()) std::memcpy(bytes, value.data(), value.size());
  Cell& cell = next_cell(type);
  cell.length = static_cast<uint32_t>(value.size());
  cell.bytes = bytes;
  return true;
}

int Result::step() {
  current_ = next_;
  if (current_ == nullptr) return ZYM_DB_STATUS_DONE;
  next_ = current_->next;
  return ZYM_DB_STATUS_ROW;
}

void Result::reset() {
  next_ = first_;
  current_ = nullptr;
}

std::string_view Result::bytes(const Cell& cell, char (&buffer)[kNumberSize]) const {
  switch (cell.type) {
    case Type::kText:
    case Type::kBlob:
      return {cell.bytes, cell.length};
    case Type::kInteger:
      return {buffer, std::to_chars(buffer, std::end(buffer), cell.integer).ptr};
    case Type::kReal:
      return {buffer, std::to_chars(buffer, std::end(buffer), cell.real, std::chars_format::general, 15).ptr};
    default:
      return {};
  }
}

int Result::read_text(int column, char* text, size_t size) const {
  const Cell* found = cell(column);
  text[0] = 0;
  if (found == nullptr || found->type == Type::kBlob) return ZYM_DB_STATUS_ERROR;
  char number[kNumberSize];
  const std::string_view value = bytes(*found, number);
  if (value.data() == nullptr) return ZYM_DB_STATUS_ERROR;
  const size_t length = std::min(value.size(), size - 1);
  std::memcpy(text, value.data(), length);
  text[length] = 0;
  return 0;
}

int Result::read_blob(int column, void* data, size_t size) const {
  const Cell* found = cell(column);
  if (found == nullptr || (found->type != Type::kBlob && found->type != Type::kText))
    return ZYM_DB_STATUS_ERROR;
  const size_t length = std::min<size_t>(found->length, size);
  if (length != 0) std::memcpy(data, found->bytes, length);
  return 0;
}

int Result::read_bytes(int column, int* length) const {
  const Cell* found = cell(column);
  if (found == nullptr) return ZYM_DB_STATUS_ERROR;
  char number[kNumberSize];
  const std::string_view value = bytes(*found, number);
  if (value.data() == nullptr) return ZYM_DB_STATUS_ERROR;
  *length = static_cast<int>(value.size());
  return 0;
}

int Result::read_is_null(int column, int* is_null) const {
  const Cell* found = cell(column);
  if (found == nullptr) return ZYM_DB_STATUS_ERROR;
  *is_null = found->type == Type::kNull || found->type == Type::kEmptyAggregate;
  return 0;
}

int Result::find(std::string_view name) const {
  const std::vector<std::string>& names = *names_;
  for (uint32_t tried = 0; tried < columns_; ++tried) {
    const uint32_t place =
        next_found_ + tried < columns_ ? next_found_ + tried : next_found_ + tried - columns_;
    // Callers mostly write a name as the schema does.
    if (names[place] != name && !same_word(names[place], name)) continue;
    next_found_ = place + 1 == columns_ ? 0 : place + 1;
    return static_cast<int>(place);
  }
  return -1;
}

bool Result::is_small() const {
  return memory_.capacity() <= kSmallResult;
}

}  // namespace zymdb::client
