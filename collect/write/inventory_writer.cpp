#include "collect/write/inventory_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "controller/database_client.h"

namespace zymdb::collect {
namespace {

constexpr char kKeyEnd = '\n';  // of each column's part; no text that the collector writes holds one

using ResultPtr = std::unique_ptr<zym_db_result_t, decltype(&zym_db_free_result)>;
using ValuesPtr = std::unique_ptr<zym_db_content_values_t, decltype(&zym_db_free_content_values)>;

// Longer than any text the collector writes, so that a longer one in the database is seen to differ.
constexpr size_t kLongestText = 1024;

// The texts of a row's columns; nothing for NULL.
using Cells = std::vector<std::optional<std::string>>;

struct StoredRow {
  int64_t id = 0;
  bool is_foreign = false;
  Cells cells;
};

[[noreturn]] void fail(const std::string& what, const char* table, int status) {
  const char* reason = zym_db_get_error_str(status);
  throw DatabaseError(what + " " + table + ": " + (reason ? reason : "unknown failure"));
}

std::optional<std::string> read_text(zym_db_result_t* result, int column) {
  int is_null = 0;
  if (zym_db_result_column_is_null(result, column, &is_null) != ZYM_DB_STATUS_OK || is_null != 0)
    return std::nullopt;
  std::array<char, kLongestText + 1> text{};
  if (zym_db_result_column_text(result, column, text.data(), static_cast<int>(text.size())) !=
      ZYM_DB_STATUS_OK) {
    return std::nullopt;
  }
  return std::string(text.data());
}

// All rows of a table, in the order of their "_id".
std::vector<StoredRow> read_rows(_zym_db_handle_t* handle, const TableContent& content) {
  std::vector<const char*> columns = {"_id", content.owner_column ? content.owner_column : "_id"};
  for (const auto& column : content.columns) columns.push_back(column.name);
  zym_db_result_t* raw = nullptr;
  int status = zym_db_query(handle, content.table, columns.data(), static_cast<int>(columns.size()), nullptr,
                            nullptr, 0, 0, &raw);
  const ResultPtr result(raw, zym_db_free_result);
  if (status != ZYM_DB_STATUS_OK || !result) fail("cannot read table", content.table, status);
  std::vector<StoredRow> rows;
  while ((status = zym_db_result_step(result.get())) == ZYM_DB_STATUS_ROW) {
    StoredRow row;
    zym_db_result_column_int64(result.get(), 0, &row.id);
    const auto owner = read_text(result.get(), 1);
    row.is_foreign = content.is_foreign && content.is_foreign(owner ? &*owner : nullptr);
    for (size_t i = 2; i < columns.size(); ++i)
      row.cells.push_back(read_text(result.get(), static_cast<int>(i)));
    rows.push_back(std::move(row));
  }
  if (status != ZYM_DB_STATUS_DONE) fail("cannot read table", content.table, status);
  std::ranges::sort(rows, {}, &StoredRow::id);
  return rows;
}

// Texts that no dialect takes for anything but what they are, between double quotes.
bool is_harmless(const Value& value) {
  return value.is_null() || value.as_text()->find_first_of("\"'\\?`;%") == std::string::npos;
}

class TableWriter {
 public:
  TableWriter(_zym_db_handle_t* handle, const TableContent& content)
      : handle_(handle), content_(content), stored_(read_rows(handle, content)) {
    summary_.table = content.table;
    if (content.is_ordered && !stands_in_order()) remove_all();
    for (const auto& row : stored_) pairs_[key_of(row.cells)].push_back(&row);
  }

  void write(const Row& row) {
    const StoredRow* stored = take(key_of(cells_of(row)));
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

  // Rows of hardware that is gone.
  void remove_rest() {
    for (const auto& [key, rows] : pairs_) {
      if (content_.kept_keys.contains(first_part(key))) continue;
      for (const StoredRow* row : rows) {
        if (!row->is_foreign) remove(*row);
      }
    }
  }

  const TableSummary& summary() const { return summary_; }

 private:
  static Cells cells_of(const Row& row) {
    Cells cells;
    for (const auto& value : row.values) cells.push_back(value.as_text());
    return cells;
  }

  std::string key_of(const Cells& cells) const {
    std::string key;
    for (size_t i = 0; i < cells.size(); ++i) {
      if (content_.columns[i].role == Role::kKey) key += cells[i].value_or("") + kKeyEnd;
    }
    return key;
  }

  static std::string first_part(const std::string& key) { return key.substr(0, key.find(kKeyEnd)); }

  // Whether the rows that stay, followed by those to come, stand in the order wanted.
  bool stands_in_order() const {
    std::map<std::string, std::vector<std::string>> wanted;
    std::map<std::string, std::vector<std::string>> result;
    std::set<std::string> missing;
    for (const auto& row : content_.rows) missing.insert(key_of(cells_of(row)));
    for (const auto& row : stored_) {
      const auto key = key_of(row.cells);
      if (missing.erase(key) != 0) result[first_part(key)].push_back(key);
    }
    for (const auto& row : content_.rows) {
      const auto key = key_of(cells_of(row));
      wanted[first_part(key)].push_back(key);
      if (missing.contains(key)) result[first_part(key)].push_back(key);
    }
    return result == wanted;
  }

  void remove_all() {
    for (const auto& row : stored_) {
      if (!content_.kept_keys.contains(first_part(key_of(row.cells)))) remove(row);
    }
    std::erase_if(stored_, [&](const StoredRow& row) {
      return !content_.kept_keys.contains(first_part(key_of(row.cells)));
    });
  }

  const StoredRow* take(const std::string& key) {
    const auto found = pairs_.find(key);
    if (found == pairs_.end() || found->second.empty()) return nullptr;
    const StoredRow* row = found->second.front();
    found->second.pop_front();
    return row;
  }

  bool is_written(size_t column, const Row& row) const {
    switch (content_.columns[column].role) {
      case Role::kInitial:
        return false;
      case Role::kPlace:
        return row.place_known;
      default:
        return true;
    }
  }

  bool is_compared(size_t column, const Row& row) const {
    return content_.columns[column].role != Role::kStamp && is_written(column, row);
  }

  bool differs(const Row& row, const StoredRow& stored) const {
    for (size_t i = 0; i < row.values.size(); ++i) {
      if (is_compared(i, row) && row.values[i].as_text() != stored.cells[i]) return true;
    }
    return false;
  }

  void put(zym_db_content_values_t* values, const char* column, const Value& value) const {
    int status = ZYM_DB_STATUS_OK;
    if (value.is_null()) {
      status = zym_db_content_put_null(values, column);
    } else if (value.is_number()) {
      status = zym_db_content_put_uint(values, column, static_cast<unsigned>(std::stoul(*value.as_text())));
    } else {
      status = zym_db_content_put_text(values, column, value.as_text()->c_str());
    }
    if (status != ZYM_DB_STATUS_OK) fail("cannot prepare a row of table", content_.table, status);
  }

  ValuesPtr make_values() const {
    ValuesPtr values(zym_db_get_content_values(handle_), zym_db_free_content_values);
    if (!values) fail("cannot prepare a row of table", content_.table, ZYM_DB_STATUS_NO_MEMORY);
    return values;
  }

  void insert(const Row& row) const {
    const ValuesPtr values = make_values();
    for (size_t i = 0; i < row.values.size(); ++i) put(values.get(), content_.columns[i].name, row.values[i]);
    if (insert_db_record(handle_, content_.table, values.get()) < 1) {
      fail("cannot insert into table", content_.table, ZYM_DB_STATUS_ERROR);
    }
  }

  void update(const Row& row, const StoredRow& stored) const {
    if (content_.change != nullptr) {
      const int status = content_.change(row);
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

  // Holds where a column of the stored row differs; nothing when that cannot be said harmlessly.
  std::optional<std::string> change_filter(const Row& row) const {
    std::string filter;
    for (size_t i = 0; i < row.values.size(); ++i) {
      if (!is_compared(i, row)) continue;
      if (!is_harmless(row.values[i])) return std::nullopt;
      filter += (filter.empty() ? "" : " OR ") + difference(content_.columns[i].name, row.values[i]);
    }
    return filter;
  }

  static std::string difference(const char* column, const Value& value) {
    if (value.is_number())
      return std::string("(") + column + " IS NULL OR " + column + "!=" + *value.as_text() + ")";
    std::string text = value.as_text().value_or("");
    return get_sql_str(column, reinterpret_cast<unsigned char*>(text.data()));
  }

  void remove(const StoredRow& row) {
    const std::string where = "_id=" + std::to_string(row.id);
    const int status = delete_db_record(handle_, content_.table, where.c_str(), nullptr, 0);
    if (status != ZYM_DB_STATUS_OK) fail("cannot delete from table", content_.table, status);
    ++summary_.removed;
  }

  _zym_db_handle_t* handle_;
  const TableContent& content_;
  std::vector<StoredRow> stored_;
  std::map<std::string, std::deque<const StoredRow*>> pairs_;  // rows not yet paired, by key
  TableSummary summary_;
};

}  // namespace

std::vector<TableSummary> write_inventory(_zym_db_handle_t* handle, const std::vector<TableContent>& tables,
                                          const Observer& observer) {
  size_t total = 0;
  for (const auto& content : tables) total += content.rows.size();
  size_t done = 0;
  const auto report = [&] {
    if (observer.progress) observer.progress(done, total);
  };
  report();
  std::vector<TableSummary> summaries;
  for (const auto& content : tables) {
    TableWriter writer(handle, content);
    for (const auto& row : content.rows) {
      writer.write(row);
      ++done;
      report();
    }
    writer.remove_rest();
    summaries.push_back(writer.summary());
  }
  return summaries;
}

}  // namespace zymdb::collect
