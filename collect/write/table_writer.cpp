#include "collect/write/table_writer.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include "controller/database_client.h"

namespace zymdb::collect {
namespace {

constexpr size_t kUsualKey = 4;  // columns of a key, at most, in nearly all tables

// Texts that no dialect takes for anything but what they are, between double quotes.
bool is_harmless(const Value& value) {
  return value.as_text() == nullptr || value.as_text()->find_first_of("\"'\\?`;%") == std::string::npos;
}

// Holds where the column does not hold the value.
std::string difference(const char* column, const Value& value) {
  if (const int64_t* number = value.as_number())
    return std::string("(") + column + " IS NULL OR " + column + "!=" + std::to_string(*number) + ")";
  std::string text = value.is_null() ? "" : *value.as_text();
  return get_sql_str(column, reinterpret_cast<unsigned char*>(text.data()));
}

// The client's puts end at 32 bits. Of a longer number it gets the text, of which the column makes a number.
int put_number(zym_db_content_values_t* values, const char* column, int64_t number) {
  if (number >= 0 && number <= int64_t{UINT32_MAX})
    return zym_db_content_put_uint(values, column, static_cast<unsigned>(number));
  return zym_db_content_put_text(values, column, std::to_string(number).c_str());
}

}  // namespace

TableWriter::TableWriter(_zym_db_handle_t* handle, const TableContent& content)
    : handle_(handle), content_(content), stored_(read_stored_rows(handle, content)) {
  summary_.table = content.table;
  remove_replaced();
  if (content.is_ordered && !stands_in_order()) remove_all();
  for (const auto& row : stored_) pairs_[key_of(row.values)].push_back(&row);
}

void TableWriter::write(const Row& row) {
  const StoredRow* stored = take(key_of(row.values));
  if (stored == nullptr) {
    insert(row);
    ++summary_.inserted;
  } else if (stored->is_foreign || !differs(row, *stored)) {
    ++summary_.unchanged;
  } else {
    update(row, *stored);
    ++summary_.updated;
  }
}

void TableWriter::remove_rest() {
  for (const auto& [key, rows] : pairs_) {
    for (const StoredRow* row : rows) {
      if (!row->is_foreign && !is_kept(*row)) remove(*row);
    }
  }
}

// An empty text tells no rows apart: it is as good as none.
TableWriter::Key TableWriter::key_of(const std::vector<Value>& values) const {
  Key key;
  key.reserve(kUsualKey);
  for (size_t i = 0; i < values.size(); ++i) {
    if (content_.columns[i].role == Role::kKey)
      key.push_back(values[i] == Value::text("") ? Value() : values[i]);
  }
  return key;
}

bool TableWriter::is_kept(const StoredRow& row) const {
  if (content_.is_partial && !is_told_of(row)) return true;
  return is_of(row, content_.kept) || (content_.keeps && content_.keeps(content_, row.values));
}

bool TableWriter::is_of(const StoredRow& row, const FunctionSet& functions) const {
  return content_.function_column != nullptr &&
         functions.contains(content_.value_of(row.values, content_.function_column));
}

void TableWriter::remove_replaced() {
  const auto is_replaced = [this](const StoredRow& row) {
    return !row.is_foreign && is_of(row, content_.replaced);
  };
  for (const auto& row : stored_) {
    if (is_replaced(row)) remove(row);
  }
  std::erase_if(stored_, is_replaced);
}

bool TableWriter::is_told_of(const StoredRow& stored) const {
  const auto key = key_of(stored.values);
  return std::ranges::any_of(content_.rows, [&](const Row& row) {
    return !key.empty() && key_of(row.values).front() == key.front();
  });
}

// Whether the rows that stay, followed by those to come, stand in the order wanted.
bool TableWriter::stands_in_order() const {
  std::map<Value, std::vector<Key>> wanted;
  std::map<Value, std::vector<Key>> result;
  std::set<Key> missing;
  for (const auto& row : content_.rows) missing.insert(key_of(row.values));
  for (const auto& row : stored_) {
    const auto key = key_of(row.values);
    if (missing.erase(key) != 0) result[key.front()].push_back(key);
  }
  for (const auto& row : content_.rows) {
    const auto key = key_of(row.values);
    wanted[key.front()].push_back(key);
    if (missing.contains(key)) result[key.front()].push_back(key);
  }
  return result == wanted;
}

void TableWriter::remove_all() {
  const auto is_ours = [this](const StoredRow& row) { return !row.is_foreign && !is_kept(row); };
  for (const auto& row : stored_) {
    if (is_ours(row)) remove(row);
  }
  std::erase_if(stored_, is_ours);
}

const StoredRow* TableWriter::take(const Key& key) {
  const auto found = pairs_.find(key);
  if (found == pairs_.end() || found->second.empty()) return nullptr;
  const StoredRow* row = found->second.front();
  found->second.pop_front();
  return row;
}

bool TableWriter::is_written(size_t column, const Row& row) const {
  const bool is_known = !row.values[column].is_null();
  if (content_.is_partial && !is_known) return false;
  switch (content_.columns[column].role) {
    case Role::kKnown:
      return is_known;
    case Role::kInitial:
    case Role::kOthers:
      return false;
    case Role::kPlace:
      return row.place_known;
    case Role::kTold:
      return row.is_told;
    default:
      return true;
  }
}

bool TableWriter::is_compared(size_t column, const Row& row) const {
  return content_.columns[column].role != Role::kStamp && is_written(column, row);
}

bool TableWriter::differs(const Row& row, const StoredRow& stored) const {
  for (size_t i = 0; i < row.values.size(); ++i) {
    if (is_compared(i, row) && row.values[i] != stored.values[i]) return true;
  }
  return false;
}

// Holds where a column of the stored row differs; nothing when that cannot be said harmlessly.
std::optional<std::string> TableWriter::change_filter(const Row& row) const {
  std::string filter;
  for (size_t i = 0; i < row.values.size(); ++i) {
    if (!is_compared(i, row)) continue;
    if (!is_harmless(row.values[i])) return std::nullopt;
    filter += (filter.empty() ? "" : " OR ") + difference(content_.columns[i].name, row.values[i]);
  }
  return filter;
}

ValuesPtr TableWriter::make_values() const {
  ValuesPtr values(zym_db_get_content_values(handle_));
  if (!values) fail("cannot prepare a row of table", content_.table, ZYM_DB_STATUS_NO_MEMORY);
  return values;
}

void TableWriter::put(zym_db_content_values_t* values, const char* column, const Value& value) const {
  int status = ZYM_DB_STATUS_OK;
  if (const int64_t* number = value.as_number()) {
    status = put_number(values, column, *number);
  } else if (const std::string* text = value.as_text()) {
    status = zym_db_content_put_text(values, column, text->c_str());
  } else {
    status = zym_db_content_put_null(values, column);
  }
  if (status != ZYM_DB_STATUS_OK) fail("cannot prepare a row of table", content_.table, status);
}

void TableWriter::insert(const Row& row) const {
  const ValuesPtr values = make_values();
  for (size_t i = 0; i < row.values.size(); ++i) {
    if (content_.columns[i].role != Role::kOthers) put(values.get(), content_.columns[i].name, row.values[i]);
  }
  if (insert_db_record(handle_, content_.table, values.get()) < 1)
    fail("cannot insert into table", content_.table, ZYM_DB_STATUS_ERROR);
}

void TableWriter::update(const Row& row, const StoredRow& stored) const {
  if (content_.change != nullptr) {
    const int status = content_.change(content_, row);
    if (status != ZYM_DB_STATUS_OK) fail("cannot update table", content_.table, status);
    return;
  }
  const ValuesPtr values = make_values();
  for (size_t i = 0; i < row.values.size(); ++i) {
    if (is_written(i, row)) put(values.get(), content_.columns[i].name, row.values[i]);
  }
  const std::string where = "_id=" + std::to_string(stored.id);
  const auto filter = change_filter(row);
  if (update_db_record(handle_, content_.table, where.c_str(), values.get(),
                       filter ? filter->c_str() : nullptr) < 1) {
    fail("cannot update table", content_.table, ZYM_DB_STATUS_ERROR);
  }
}

void TableWriter::remove(const StoredRow& row) {
  const std::string where = "_id=" + std::to_string(row.id);
  const int status = delete_db_record(handle_, content_.table, where.c_str(), nullptr, 0);
  if (status != ZYM_DB_STATUS_OK) fail("cannot delete from table", content_.table, status);
  ++summary_.removed;
}

}  // namespace zymdb::collect
