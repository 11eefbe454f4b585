#include "client/engine/mariadb/transaction.h"

#include <mysqld_error.h>

#include "client/engine/json_text.h"
#include "client/engine/mariadb/journal.h"
#include "client/status.h"

namespace zymdb::client::mariadb {
namespace {

// A wait for the lock is bounded by its own limit.
constexpr char kLock[] =
    "SET STATEMENT max_statement_time=0 FOR SELECT `Changes` FROM `zymdb_schemas` WHERE `Name`=? FOR UPDATE";
constexpr char kMoveMark[] = "UPDATE `zymdb_schemas` SET `Changes`=`Changes`+1 WHERE `Name`=?";
constexpr char kLastId[] = "SELECT `Last` FROM `zymdb_sequences` WHERE `Name`=?";
constexpr char kKeepLastId[] =
    "INSERT INTO `zymdb_sequences` (`Name`,`Last`) VALUES (?,?) ON DUPLICATE KEY UPDATE "
    "`Last`=GREATEST(`Last`,VALUES(`Last`))";
constexpr std::string_view kId = "_id";
constexpr Class kNumber[] = {Class::kInteger};

bool is_id(const Column& column) {
  return same_word(column.name, kId);
}

Argument::Type type_of(const Column& column) {
  if (column.is_bytes) return Argument::Type::kBlob;
  return column.is_text ? Argument::Type::kText : Argument::Type::kInteger;
}

// The places of a row's values.
std::string places(size_t width) {
  std::string text = "(";
  for (size_t i = 0; i < width; ++i) text += i == 0 ? "?" : ",?";
  return text + ")";
}

std::string json_of(const Argument& value) {
  switch (value.type) {
    case Argument::Type::kInteger:
      return std::to_string(value.integer);
    case Argument::Type::kReal:
      return json_of_real(value.real);
    case Argument::Type::kText:
      return json_of_text(value.text);
    case Argument::Type::kBlob:
      return json_of_blob(value.text);
    default:
      return "null";
  }
}

bool same_value(const Argument& a, const Argument& b) {
  if (a.type != b.type) return false;
  if (a.type == Argument::Type::kInteger) return a.integer == b.integer;
  return a.text == b.text;
}

// The rows of these ids, which are the client's own numbers.
std::string rows_of(const std::vector<int64_t>& ids) {
  if (ids.size() == 1) return " WHERE `_id`=?";
  std::string sql = " WHERE `_id` IN (";
  for (const int64_t id : ids) sql.append(std::to_string(id)).push_back(',');
  sql.back() = ')';
  return sql;
}

}  // namespace

Failure Transaction::begin() {
  if (Failure failure = connection_.begin()) return failure;
  const Argument name[] = {Argument::of(std::string_view(subject_.schema.name))};
  Failure failure = connection_.run(kLock, name, kNumber, [](Row) { return true; });
  if (failure && !failure.ends_connection()) rollback();
  return failure;
}

Failure Transaction::change(const Statement& statement, Shape& shape, Change& change) {
  const Table& table = *statement.table();
  if (table.name() == kJournalTable) return {kStatusRefused, "the journal is the client's own"};
  const std::span<const Argument> values = statement.arguments().first(shape.columns().size());
  const std::span<const Argument> condition = statement.arguments().subspan(shape.columns().size());
  if (statement.kind() == Request::Kind::kInsert) return insert(table, shape, values, change);
  if (Failure failure = send_rows()) return failure;
  std::vector<Argument> given(condition.begin(), condition.end());
  if (statement.kind() == Request::Kind::kUpdate)
    return update(table, shape, values, std::move(given), change);
  return remove(table, shape, std::move(given), change);
}

// As the columns take them: number columns integers, text columns texts, others bytes.
Failure Transaction::admit(std::span<const Column* const> columns, std::span<const Argument> values,
                           std::vector<Argument>& admitted, std::vector<std::string>& storage) const {
  storage.resize(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    const Column& column = *columns[i];
    Argument value = values[i];
    if (column.is_text)
      value = as_text(value, storage[i]);
    else if (!column.is_bytes)
      value = as_number(value);
    if (value.type != Argument::Type::kNull && value.type != type_of(column))
      return {kStatusConstraint, "\"" + column.name + "\" does not admit the value"};
    admitted.push_back(value);
  }
  return {};
}

Failure Transaction::insert(const Table& table, Shape& shape, std::span<const Argument> values,
                            Change& change) {
  std::vector<Argument> admitted;
  std::vector<std::string> storage;
  if (Failure failure = admit(shape.columns(), values, admitted, storage)) return failure;
  std::string names;
  Argument* id = nullptr;
  bool is_new_id = false;
  admitted.reserve(admitted.size() + 1);
  for (size_t i = 0; i < admitted.size(); ++i) {
    if (is_id(*shape.columns()[i])) id = &admitted[i];
    names.append(identifier(shape.columns()[i]->name)).push_back(',');
  }
  if (id == nullptr) {
    names.append("`_id`,");
    id = &admitted.emplace_back();
  }
  if (id->type == Argument::Type::kNull) {
    int64_t next = 0;
    if (Failure failure = next_id(table, next)) return failure;
    *id = Argument::of(next);
    is_new_id = true;
  }
  names.pop_back();
  const std::string insert = "INSERT INTO " + identifier(table.name()) + " (" + names + ") VALUES ";
  Failure failure = put(table, insert, admitted, is_new_id);
  // Then only the table itself knows its last one.
  if (failure || !is_new_id) last_ids_.erase(table.name());
  if (failure) return failure;
  change.rows = 1;
  change.id = id->integer;
  changed_ = true;
  if (is_accounted(table)) account_.of(table.name()).add(change.id);
  return note_lasting_id(table, change.id);
}

// Nothing of the inventory is unique or required but the id, so that rows with new ones may wait and are not
// refused later.
Failure Transaction::put(const Table& table, const std::string& insert, std::span<const Argument> row,
                         bool has_new_id) {
  const bool may_wait = has_new_id && new_rows_ == NewRows::kGathered && has_journal() &&
                        PendingRows::may_hold(row) && !subject_.tables.lasting_ids.contains(table.name());
  if (!may_wait || !pending_.takes(insert, row)) {
    if (Failure failure = send_rows()) return failure;
  }
  if (!may_wait) return connection_.run(insert + places(row.size()), row);
  pending_.add(insert, row);
  return {};
}

Failure Transaction::send_rows() {
  Failure failure = pending_.send(connection_);
  if (failure && !failure.ends_transaction()) failure.aftermath = Aftermath::kTransactionLost;
  return failure;
}

// Behind the newest row's, or behind all that ever were.
Failure Transaction::next_id(const Table& table, int64_t& id) {
  auto last = last_ids_.find(table.name());
  if (last == last_ids_.end()) {
    int64_t found = 0;
    if (Failure failure = find_last_id(table, found)) return failure;
    last = last_ids_.emplace(table.name(), found).first;
  }
  if (last->second == INT64_MAX) return {kStatusFull, "there is no number left for another row"};
  id = ++last->second;
  return {};
}

Failure Transaction::find_last_id(const Table& table, int64_t& last) {
  const auto take = [&](Row row) {
    if (row[0].type == Argument::Type::kInteger) last = std::max(last, row[0].integer);
    return true;
  };
  if (Failure failure =
          connection_.run("SELECT MAX(`_id`) FROM " + identifier(table.name()), {}, kNumber, take))
    return failure;
  if (subject_.tables.lasting_ids.contains(table.name())) {
    const Argument name[] = {Argument::of(std::string_view(table.name()))};
    return connection_.run(kLastId, name, kNumber, take);
  }
  return {};
}

Failure Transaction::note_lasting_id(const Table& table, int64_t id) {
  if (!subject_.tables.lasting_ids.contains(table.name())) return {};
  const Argument sequence[] = {Argument::of(std::string_view(table.name())), Argument::of(id)};
  return connection_.run(kKeepLastId, sequence);
}

Failure Transaction::read_affected(Shape& shape, std::vector<Argument>& condition,
                                   std::span<const Column* const> columns, std::vector<Former>& rows) {
  std::string reason;
  const Variant* const variant = shape.affected(condition, columns, reason);
  if (variant == nullptr) return {ZYM_DB_STATUS_ERROR, reason};
  return connection_.run(variant->sql, variant->arguments_of(condition), variant->classes, [&](Row row) {
    Former& former = rows.emplace_back();
    former.id = row[0].integer;
    former.cells.assign(row.begin() + 1, row.end());
    former.bytes.resize(former.cells.size());
    for (size_t i = 0; i < former.cells.size(); ++i) {
      Argument& cell = former.cells[i];
      if (cell.type != Argument::Type::kText && cell.type != Argument::Type::kBlob) continue;
      former.bytes[i] = cell.text;
      cell.text = former.bytes[i];
    }
    return true;
  });
}

Failure Transaction::update(const Table& table, Shape& shape, std::span<const Argument> values,
                            std::vector<Argument> condition, Change& change) {
  std::vector<Argument> admitted;
  std::vector<std::string> storage;
  if (Failure failure = admit(shape.columns(), values, admitted, storage)) return failure;
  for (const Column* const column : shape.columns()) {
    if (is_id(*column)) return {kStatusRefused, "a row keeps its \"_id\""};
  }
  std::vector<Former> rows;
  if (Failure failure = read_affected(shape, condition, shape.columns(), rows)) return failure;
  if (rows.empty()) return {};
  std::vector<int64_t> ids;
  for (const Former& row : rows) ids.push_back(row.id);
  std::string sql = "UPDATE " + identifier(table.name()) + " SET ";
  for (const Column* const column : shape.columns()) sql += identifier(column->name) + "=?,";
  sql.pop_back();
  if (ids.size() == 1) admitted.push_back(Argument::of(ids[0]));
  if (Failure failure = connection_.run(sql + rows_of(ids), admitted)) return failure;
  change.rows = static_cast<int64_t>(rows.size());
  account_for_update(table, shape.columns(), admitted, rows);
  return {};
}

void Transaction::account_for_update(const Table& table, std::span<const Column* const> columns,
                                     std::span<const Argument> values, const std::vector<Former>& rows) {
  if (!is_accounted(table)) {
    changed_ = true;
    return;
  }
  TableChanges& changes = account_.of(table.name());
  for (const Former& row : rows) {
    const bool is_new = changes.has_added(row.id);
    for (size_t i = 0; i < columns.size(); ++i) {
      if (same_value(row.cells[i], values[i])) continue;
      changed_ = true;
      if (is_new || subject_.volatiles.has(table.name(), columns[i]->name)) continue;
      changes.former(row.id).emplace(columns[i]->name, json_of(row.cells[i]));
    }
  }
}

Failure Transaction::remove(const Table& table, Shape& shape, std::vector<Argument> condition,
                            Change& change) {
  std::vector<const Column*> columns;
  if (is_accounted(table)) {
    for (const Column& column : table.columns()) columns.push_back(&column);
  }
  std::vector<Former> rows;
  if (Failure failure = read_affected(shape, condition, columns, rows)) return failure;
  if (rows.empty()) return {};
  last_ids_.erase(table.name());
  std::vector<int64_t> ids;
  for (const Former& row : rows) ids.push_back(row.id);
  std::vector<Argument> one;
  if (ids.size() == 1) one.push_back(Argument::of(ids[0]));
  if (Failure failure = connection_.run("DELETE FROM " + identifier(table.name()) + rows_of(ids), one))
    return failure;
  change.rows = static_cast<int64_t>(rows.size());
  changed_ = true;
  if (is_accounted(table)) account_for_removal(table, columns, rows);
  return {};
}

void Transaction::account_for_removal(const Table& table, std::span<const Column* const> columns,
                                      const std::vector<Former>& rows) {
  TableChanges& changes = account_.of(table.name());
  for (const Former& row : rows) {
    FormerCells* const cells = changes.remove(row.id);
    for (size_t i = 0; cells != nullptr && i < columns.size(); ++i)
      cells->emplace(columns[i]->name, json_of(row.cells[i]));
  }
}

bool Transaction::is_accounted(const Table& table) const {
  return has_journal() && !subject_.volatiles.has_all_of(table.name());
}

Failure Transaction::record() {
  if (!changed_) return {};
  if (Failure failure = send_rows()) return failure;
  if (has_journal()) {
    const std::string account = subject_.bounds.keeps_any() ? account_.text() : std::string();
    if (Failure failure = append_to_journal(connection_, subject_.bounds, account)) return failure;
  }
  const Argument name[] = {Argument::of(std::string_view(subject_.schema.name))};
  return connection_.run(kMoveMark, name);
}

// Where another transaction was first nothing of this one is left. Of no other failure is that certain: a
// node that has lost the others in the middle does not know what they heard.
Failure Transaction::commit() {
  Failure failure = connection_.commit();
  if (!failure || failure.code == ER_LOCK_DEADLOCK) return failure;
  failure.status = kStatusIo;
  failure.aftermath = Aftermath::kConnectionLost;
  return failure;
}

}  // namespace zymdb::client::mariadb
