#include "client/dialect/statement.h"

#include <algorithm>
#include <cstring>

namespace zymdb::client {
namespace {

// No name holds it.
constexpr char kKeySeparator = '\0';
constexpr std::string_view kId = "_id";
constexpr size_t kDescribedLength = 400;

// Arguments that the function takes: fewer than any build of an engine's allows.
constexpr size_t kMostGathered = 100;

// The parameter types of the client interface.
constexpr uint32_t kParamUint16 = 2;
constexpr uint32_t kParamUint32 = 3;

bool read_param(const _zym_db_param_t& param, Argument& argument) {
  if (param.type != kParamUint16 && param.type != kParamUint32) return false;
  argument =
      Argument::of(static_cast<int64_t>(param.value & (param.type == kParamUint16 ? 0xFFFFU : 0xFFFFFFFFU)));
  return true;
}

}  // namespace

int Statement::compose(const Catalog& catalog, const Request& request) {
  request_ = request;
  flavour_ = &catalog.flavour();
  reason_ = {};
  arguments_.clear();
  column_names_.clear();
  value_count_ = 0;
  is_gathered_ = false;
  table_ = request.kind == Request::Kind::kRaw ? nullptr : catalog.table(request.table);
  if (table_ == nullptr && request.kind != Request::Kind::kRaw)
    return refuse("no such table", ZYM_DB_STATUS_ERROR);
  if (request.values != nullptr) add_values();
  if (const int status = translate(catalog)) return refuse(condition_.reason, status);
  if (const int status = fill_placeholders()) return status;
  build_key();
  return 0;
}

int Statement::translate(const Catalog& catalog) {
  if (kind() == Request::Kind::kRaw) return translate_select(catalog, request_.sql, condition_);
  if (request_.where == nullptr) {
    condition_.clear();
    return 0;
  }
  const bool is_known = known_.recall(catalog, *table_, request_.where, condition_);
  const int status = is_known ? 0 : translate_condition(catalog, *table_, request_.where, condition_);
  if (status == 0 && !is_known) known_.note(condition_);
  const bool tail = condition_.grouped || condition_.tail != condition_.shape.npos;
  if (status == 0 && is_change() && tail) {
    condition_.reason = "a change takes a condition only";
    return ZYM_DB_STATUS_ERROR;
  }
  return status;
}

void Statement::add_values() {
  value_count_ = request_.values->size();
  for (size_t i = 0; i < value_count_; ++i) arguments_.push_back(request_.values->value(i));
}

int Statement::fill_placeholders() {
  size_t used = 0;
  for (Argument argument : condition_.arguments) {
    if (argument.type == Argument::Type::kPlaceholder) {
      if (used == request_.params.size())
        return refuse("a \"?\" without a value", ZYM_DB_STATUS_INVALID_PARAM);
      if (!read_param(request_.params[used++], argument)) {
        return refuse("a parameter of an unknown type", ZYM_DB_STATUS_INVALID_PARAM);
      }
    }
    arguments_.push_back(argument);
  }
  return 0;
}

// kind, columns, then what a probe shares with every other change of that condition: table and shape.
void Statement::build_key() {
  key_.assign(1, static_cast<char>(kind()));
  key_.append(known_columns_.text(request_.columns));
  for (size_t i = 0; i < value_count_; ++i) key_.append(request_.values->column(i)).push_back(kKeySeparator);
  probe_begin_ = key_.size();
  key_.push_back(request_.where == nullptr ? 'a' : 'p');
  if (table_ != nullptr) key_.append(table_->name()).push_back(kKeySeparator);
  key_.append(condition_.shape);
}

bool Statement::sql(std::string& out) {
  switch (kind()) {
    case Request::Kind::kQuery:
      return query_sql(out);
    case Request::Kind::kInsert:
      return insert_sql(out);
    case Request::Kind::kUpdate:
      return update_sql(out);
    case Request::Kind::kDelete:
      out = "DELETE FROM ";
      append_identifier(out, table_->name(), *flavour_);
      append_changed_rows(out);
      return true;
    case Request::Kind::kRaw:
      out = condition_.shape;
      return true;
  }
  return false;
}

bool Statement::query_sql(std::string& out) {
  out.clear();
  Columns columns;
  if (!append_columns(out, columns)) return false;
  // What sorts, counts or limits rows does so with those that come back.
  is_gathered_ = !flavour_->gathering.empty() && columns.are_plain && condition_.bare &&
                 column_names_.size() <= kMostGathered;
  if (is_gathered_) out.insert(0, std::string(flavour_->gathering) + "(").push_back(')');
  out.insert(0, "SELECT ").append(" FROM ");
  append_identifier(out, table_->name(), *flavour_);
  append_condition(out, columns.has_aggregate && columns.has_other);
  return true;
}

bool Statement::append_columns(std::string& out, Columns& columns) {
  const char* separator = "";
  for (const char* text : request_.columns) {
    ColumnEntry entry;
    if (!parse_column(*table_, text, entry, *flavour_)) {
      reason_ = "no such column";
      return false;
    }
    out.append(separator).append(entry.sql);
    separator = ", ";
    column_names_.push_back(std::move(entry.name));
    (entry.aggregate ? columns.has_aggregate : columns.has_other) = true;
    columns.are_plain &= entry.plain;
  }
  if (request_.columns.empty()) append_all_columns(out);
  return true;
}

// Named one by one: a column that an upgrade adds later does not shift the others.
void Statement::append_all_columns(std::string& out) {
  const char* separator = "";
  for (const Column& column : table_->columns()) {
    column_names_.push_back(column.name);
    append_identifier(out.append(separator), column.name, *flavour_);
    separator = ",";
  }
}

// Beside plain columns an aggregate over no rows makes a row of NULLs up: counting the rows keeps it away.
void Statement::append_condition(std::string& out, bool count_rows) const {
  const std::string_view shape = condition_.shape;
  const size_t tail = std::min(condition_.tail, shape.size());
  if (request_.where != nullptr) out.append(" WHERE ").append(shape.substr(0, tail));
  if (count_rows && !condition_.grouped) out.append(" HAVING count(*)>0 ");
  out.append(shape.substr(tail));
}

bool Statement::insert_sql(std::string& out) {
  out = "INSERT INTO ";
  append_identifier(out, table_->name(), *flavour_);
  if (value_count_ == 0) {
    out.append(flavour_->default_row);
    return true;
  }
  out.append(" (");
  if (!append_value_columns(out, "")) return false;
  out.append(") VALUES (?");
  for (size_t i = 1; i < value_count_; ++i) out.append(",?");
  out.push_back(')');
  return true;
}

bool Statement::update_sql(std::string& out) {
  out = "UPDATE ";
  append_identifier(out, table_->name(), *flavour_);
  out.append(" SET ");
  if (!append_value_columns(out, "=?")) return false;
  append_changed_rows(out);
  return true;
}

// All of them are known before the first one changes.
void Statement::append_changed_rows(std::string& out) const {
  if (!flavour_->changes_see_themselves || condition_.shape.find("SELECT") == condition_.shape.npos)
    return append_condition(out, false);
  append_identifier(out.append(" WHERE "), kId, *flavour_);
  append_identifier(out.append(" IN (SELECT "), kId, *flavour_);
  append_identifier(out.append(" FROM "), table_->name(), *flavour_);
  append_condition(out, false);
  out.push_back(')');
}

bool Statement::append_value_columns(std::string& out, std::string_view after) {
  for (size_t i = 0; i < value_count_; ++i) {
    const Column* column = table_->column(request_.values->column(i));
    if (column == nullptr) {
      reason_ = "no such column";
      return false;
    }
    if (i != 0) out.push_back(',');
    append_identifier(out, column->name, *flavour_);
    out.append(after);
  }
  return true;
}

std::string Statement::probe_sql() const {
  std::string out = "SELECT 1 FROM ";
  append_identifier(out, table_->name(), *flavour_);
  append_condition(out, false);
  return out.append(" LIMIT 1");
}

std::string Statement::describe() const {
  if (kind() == Request::Kind::kRaw) return std::string(request_.sql.substr(0, kDescribedLength));
  const char* verb = "query of ";
  if (kind() == Request::Kind::kInsert) verb = "insert into ";
  if (kind() == Request::Kind::kUpdate) verb = "update of ";
  if (kind() == Request::Kind::kDelete) verb = "delete from ";
  std::string text = verb;
  text.append(request_.table.substr(0, kDescribedLength));
  if (request_.where != nullptr)
    text.append(" where ").append(std::string_view(request_.where).substr(0, kDescribedLength));
  return text;
}

int Statement::refuse(std::string_view reason, int status) {
  reason_ = reason;
  return status;
}

}  // namespace zymdb::client
