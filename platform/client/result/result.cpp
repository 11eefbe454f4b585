#include "client/result/result.h"

#include <charconv>
#include <iterator>
#include <numeric>

#include "client/dialect/catalog.h"
#include "zymdb_db.h"

namespace zymdb::client {
namespace {

constexpr size_t kSmallResult = 512 * 1024;

}  // namespace

NamedColumns::NamedColumns(std::vector<std::string> names) : names_(std::move(names)), order_(names_.size()) {
  std::iota(order_.begin(), order_.end(), 0);
}

// Most callers write a name as the schema does, and ask for what lies behind what they asked for last.
int NamedColumns::search(std::string_view name, uint32_t& asked) const {
  const size_t columns = names_.size();
  const size_t first = asked == 0 || asked > columns ? 0 : order_[asked - 1] + 1;
  for (size_t tried = 0; tried < columns; ++tried) {
    const size_t place = (first + tried) % columns;
    if (names_[place] != name && !same_word(names_[place], name)) continue;
    if (asked < columns) order_[asked] = static_cast<uint32_t>(place);
    ++asked;
    return static_cast<int>(place);
  }
  return -1;
}

void Result::start(ColumnNames names, size_t limit) {
  names_ = std::move(names);
  columns_ = static_cast<uint32_t>(names_->size());
  limit_ = std::min<size_t>(limit, kLongest);
  room_ = std::min(limit_, bytes_.capacity());
  bytes_.clear();
  rows_ = 0;
  reset();
}

void Result::assign(const KeptRows& rows) {
  start(rows.names, rows.bytes.size());
  bytes_.reserve(rows.bytes.size());
  bytes_.append(std::string_view(rows.bytes));
  rows_ = rows.count;
}

KeptRows Result::rows() const {
  return {names_, std::string(reinterpret_cast<const char*>(bytes_.data()), bytes_.size()), rows_};
}

bool Result::grow(size_t size) {
  if (size > limit_ - std::min(limit_, bytes_.size())) return false;
  bytes_.reserve(size);
  room_ = std::min(limit_, bytes_.capacity());
  return true;
}

int Result::step() {
  row_ = nullptr;
  asked_ = 0;
  if (next_ == bytes_.size()) return ZYM_DB_STATUS_DONE;
  row_ = bytes_.data() + next_;
  next_ += load<RowSize>(row_);
  return ZYM_DB_STATUS_ROW;
}

void Result::reset() {
  next_ = 0;
  row_ = nullptr;
  asked_ = 0;
}

std::string_view Result::bytes(Cell cell, char (&buffer)[kNumberSize]) const {
  const auto written = [&](std::to_chars_result end) { return std::string_view(buffer, end.ptr); };
  switch (cell.type) {
    case Type::kText:
    case Type::kBlob:
      return bytes(cell);
    case Type::kNarrowInteger:
      return written(std::to_chars(buffer, std::end(buffer), static_cast<int32_t>(cell.value)));
    case Type::kInteger:
      return written(std::to_chars(buffer, std::end(buffer), load<int64_t>(row_ + cell.value)));
    case Type::kReal:
      return written(std::to_chars(buffer, std::end(buffer), load<double>(row_ + cell.value),
                                   std::chars_format::general, 15));
    default:
      return {};
  }
}

int Result::read_other_text(Cell cell, char* text, size_t size) const {
  text[0] = 0;
  if (cell.type == Type::kBlob) return ZYM_DB_STATUS_ERROR;
  char number[kNumberSize];
  const std::string_view value = bytes(cell, number);
  if (value.data() == nullptr) return ZYM_DB_STATUS_ERROR;
  copy_text(value, text, size);
  return 0;
}

int Result::read_blob(int column, void* data, size_t size) const {
  Cell cell;
  if (!find(column, cell) || (cell.type != Type::kBlob && cell.type != Type::kText))
    return ZYM_DB_STATUS_ERROR;
  const std::string_view value = bytes(cell);
  if (const size_t length = std::min(value.size(), size); length != 0)
    std::memcpy(data, value.data(), length);
  return 0;
}

int Result::read_bytes(int column, int* length) const {
  Cell cell;
  char number[kNumberSize];
  if (!find(column, cell)) return ZYM_DB_STATUS_ERROR;
  const std::string_view value = bytes(cell, number);
  if (value.data() == nullptr) return ZYM_DB_STATUS_ERROR;
  *length = static_cast<int>(value.size());
  return 0;
}

int Result::read_is_null(int column, int* is_null) const {
  Cell cell;
  if (!find(column, cell)) return ZYM_DB_STATUS_ERROR;
  *is_null = cell.type == Type::kNull || cell.type == Type::kEmptyAggregate;
  return 0;
}

bool Result::is_small() const {
  return bytes_.capacity() <= kSmallResult;
}

}  // namespace zymdb::client
