#include "support/scripted_client.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <optional>
#include <sstream>

#include "controller/bios_configuration.h"
#include "controller/platform_tables.h"
#include "controller/property_database.h"
#include "controller/ruvo_log.h"

using scripted::Answer;
using scripted::Cell;
using scripted::client;

struct _zym_db_handle_t {};

struct zym_db_result_t {
  Answer answer;
  std::string table;
  size_t next = 0;  // the row after the current one

  const Cell* cell(int column) const {
    if (next == 0 || next > answer.rows.size()) return nullptr;
    const scripted::Row& row = answer.rows[next - 1];
    return column >= 0 && static_cast<size_t>(column) < row.size() ? &row[static_cast<size_t>(column)]
                                                                   : nullptr;
  }
  int index_of(const char* name) const {
    for (size_t i = 0; i < answer.names.size(); ++i)
      if (answer.names[i] == name) return static_cast<int>(i);
    return -1;
  }
};

struct zym_db_content_values_t {
  std::vector<std::string> pairs;

  std::string text() const {
    std::string joined;
    for (const std::string& pair : pairs) joined += (joined.empty() ? "" : ", ") + pair;
    return joined;
  }
};

namespace scripted {
namespace {

Client* current = nullptr;
_zym_db_handle_t the_handle;
_zym_db_handle_t the_properties;

std::string text_or_null(const char* text) {
  return text != nullptr ? text : "NULL";
}

std::string parameters(const _zym_db_param_t* params, int count) {
  if (count == 0) return "";
  std::string text = " with";
  for (int i = 0; i < count; ++i) {
    if (params == nullptr) return text + " NULL";
    text += " " + std::to_string(params[i].type) + "/" + std::to_string(params[i].reserved) + "/" +
            std::to_string(params[i].flag) + ":" + std::to_string(params[i].value);
  }
  return text;
}

Answer next_answer(const Question& question, const std::string& statement) {
  if (client().tables) return client().tables(question);
  if (client().answers.empty()) {
    ADD_FAILURE() << "no answer prepared for " << statement;
    return Answer::failing(99);
  }
  Answer answer = std::move(client().answers.front());
  client().answers.pop_front();
  return answer;
}

int answer_query(const std::string& operation, const std::string& text, const Question& question,
                 zym_db_result_t** result) {
  const int failure = client().called(operation, text, question.table);
  client().statements.push_back(operation + " " + text);
  if (failure != 0) return failure;
  Answer answer = next_answer(question, operation + " " + text);
  if (client().failure_of("result", question.table) != 0) answer = Answer::without_result();
  if (const int late = client().failure_of("failing result", question.table); late != 0) answer.status = late;
  const int status = answer.status;
  if (answer.has_result) {
    ++client().live_objects;
    *result = new zym_db_result_t{std::move(answer), question.table};
  }
  return status;
}

// The columns and the table of a statement like "select distinct a,b from t where …".
Question question_of(const std::string& sql) {
  std::string plain = sql;
  std::ranges::transform(plain, plain.begin(), [](unsigned char c) { return std::tolower(c); });
  const size_t from = plain.find(" from ");
  if (from == std::string::npos) return {};
  std::istringstream rest(sql.substr(from + 6));
  Question question;
  rest >> question.table;
  std::getline(rest, question.where);
  if (question.table.ends_with(';')) question.table.pop_back();
  const size_t first = plain.find_first_not_of(' ', plain.starts_with("select distinct") ? 15 : 6);
  std::istringstream columns(sql.substr(first, from - first));
  for (std::string column; std::getline(columns >> std::ws, column, ',');) question.columns.push_back(column);
  return question;
}

const int64_t* number_of(const Cell* cell) {
  if (cell == nullptr) return nullptr;
  if (const auto* either = std::get_if<scripted::EitherWay>(cell)) return &either->value;
  return std::get_if<int64_t>(cell);
}

std::optional<std::string> text_of(const Cell* cell) {
  if (cell == nullptr) return std::nullopt;
  if (const auto* either = std::get_if<scripted::EitherWay>(cell)) return std::to_string(either->value);
  if (const auto* text = std::get_if<std::string>(cell)) return *text;
  return std::nullopt;
}

template <class Number>
int read_number(const char* operation, zym_db_result_t* result, int column, Number* value,
                const char* name = nullptr) {
  const std::string arguments = name != nullptr ? name : std::to_string(column);
  if (const int failure = client().called(operation, arguments, result->table); failure != 0) return failure;
  const Cell* cell = result->cell(column);
  const int64_t* number = number_of(cell);
  if (number == nullptr) return ZYM_DB_STATUS_ERROR;
  *value = static_cast<Number>(*number);
  return ZYM_DB_STATUS_OK;
}

int read_text(const char* operation, zym_db_result_t* result, int column, char* text, int size,
              const char* name = nullptr) {
  const std::string arguments =
      (name != nullptr ? name : std::to_string(column)) + " size " + std::to_string(size);
  const int failure = client().called(operation, arguments, result->table);
  if (failure != 0 && !client().failed_texts_arrive) return failure;
  const std::optional<std::string> stored = text_of(result->cell(column));
  if (!stored) return ZYM_DB_STATUS_ERROR;
  std::snprintf(text, static_cast<size_t>(size), "%s", stored->c_str());
  return failure;
}

int put(zym_db_content_values_t* values, const char* kind, const char* column, const std::string& value) {
  const std::string pair = std::string(column) + "=" + kind + ":" + value;
  if (const int failure = client().called("put", pair); failure != 0) return failure;
  values->pairs.push_back(pair);
  return ZYM_DB_STATUS_OK;
}

int write(const char* operation, const char* table, const std::string& text) {
  const int failure = client().called(operation, table + text, table);
  client().statements.push_back(std::string(operation) + " " + table + text);
  return failure;
}

[[gnu::format(printf, 2, 0)]] void log(const char* level, const char* format, va_list arguments) {
  char text[4096];
  std::vsnprintf(text, sizeof text, format, arguments);
  client().log.push_back(std::string(level) + ": " + text);
}

}  // namespace

Client& client() {
  return *current;
}

int Client::called(const std::string& operation, const std::string& arguments, const std::string& table) {
  calls.push_back(arguments.empty() ? operation : operation + " " + arguments);
  return failure_of(operation, table);
}

int Client::failure_of(const std::string& operation, const std::string& table) {
  const auto failure_of_next = [this](const std::string& name) {
    const NumberedCall call{name, counts_[name]++};
    sequence.push_back(call);
    const auto failure = failures.find(call);
    return failure != failures.end() ? failure->second : 0;
  };
  const int failure = failure_of_next(operation);
  if (table.empty()) return failure;
  sequence.pop_back();
  const int failure_of_table = failure_of_next(operation + " " + table);
  return failure != 0 ? failure : failure_of_table;
}

FreshClient::FreshClient() {
  current = new Client;
}

FreshClient::~FreshClient() {
  EXPECT_EQ(client().live_objects, 0) << "results, value sets or connections were not freed";
  delete current;
  current = nullptr;
}

}  // namespace scripted

using namespace scripted;

_zym_db_handle_t* get_dmdb_handle(void) {
  return client().failure_of("handle") == 0 && client().has_database ? &the_handle : nullptr;
}

_zym_db_handle_t* zym_db_open(const char* host, const char* user, const char* password, const char* database,
                              int flags) {
  const std::string arguments = std::string(database) + " of " + user + ":" + password + "@" + host;
  EXPECT_EQ(flags, 0);
  if (client().called("open", arguments) != 0 || !client().has_properties) return nullptr;
  ++client().live_objects;
  return &the_properties;
}

int zym_db_close(_zym_db_handle_t* handle) {
  EXPECT_EQ(handle, &the_properties);
  client().calls.push_back("close");
  --client().live_objects;
  return ZYM_DB_STATUS_OK;
}

int zym_db_query(_zym_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zym_db_param_t* params, int nparams, int reserved,
                 zym_db_result_t** result) {
  EXPECT_EQ(reserved, 0);
  EXPECT_EQ(handle == &the_properties, std::strcmp(table, "propertiesDCTbl") == 0) << table;
  std::string list;
  for (int i = 0; i < ncolumns; ++i) list += (i == 0 ? "" : ",") + std::string(columns[i]);
  if (columns == nullptr) list = "*";
  Question question{.table = table, .columns = {}, .where = where != nullptr ? where : ""};
  if (columns != nullptr) question.columns.assign(columns, columns + ncolumns);
  return answer_query(
      "query",
      std::string(table) + " [" + list + "] where " + text_or_null(where) + parameters(params, nparams),
      question, result);
}

int zym_db_raw_query(_zym_db_handle_t*, const char* sql, int size, zym_db_result_t** result) {
  return answer_query("raw_query", std::string(sql) + " size " + std::to_string(size), question_of(sql),
                      result);
}

int zym_db_result_step(zym_db_result_t* result) {
  if (const int failure = client().called("step", "", result->table); failure != 0) return failure;
  if (result->next >= result->answer.rows.size()) return result->answer.end;
  ++result->next;
  return ZYM_DB_STATUS_ROW;
}

unsigned int zym_db_result_row_count(zym_db_result_t* result) {
  client().calls.push_back("row_count");
  return result->answer.row_count.value_or(static_cast<unsigned>(result->answer.rows.size()));
}

int zym_db_result_reset(zym_db_result_t* result) {
  if (const int failure = client().called("reset", "", result->table); failure != 0) return failure;
  result->next = 0;
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_uint(zym_db_result_t* result, int column, unsigned int* value) {
  return read_number("uint", result, column, value);
}
int zym_db_result_column_int(zym_db_result_t* result, int column, int* value) {
  return read_number("int", result, column, value);
}
int zym_db_result_column_uint64(zym_db_result_t* result, int column, uint64_t* value) {
  return read_number("uint64", result, column, value);
}
int zym_db_result_column_int64(zym_db_result_t* result, int column, int64_t* value) {
  return read_number("int64", result, column, value);
}
int zym_db_result_column_uchar(zym_db_result_t* result, int column, unsigned char* value) {
  return read_number("uchar", result, column, value);
}
int zym_db_result_column_short_uint(zym_db_result_t* result, int column, unsigned short* value) {
  return read_number("short_uint", result, column, value);
}

int zym_db_result_column_text(zym_db_result_t* result, int column, char* text, int size) {
  return read_text("text", result, column, text, size);
}

int zym_db_result_column_blob(zym_db_result_t* result, int column, void* data, int size) {
  if (const int failure = client().called("blob", std::to_string(column), result->table); failure != 0)
    return failure;
  const std::optional<std::string> stored = text_of(result->cell(column));
  if (!stored) return ZYM_DB_STATUS_ERROR;
  std::memcpy(data, stored->data(), std::min(stored->size(), static_cast<size_t>(size)));
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_bytes(zym_db_result_t* result, int column, int* length) {
  if (const int failure = client().called("bytes", std::to_string(column), result->table); failure != 0)
    return failure;
  const std::optional<std::string> stored = text_of(result->cell(column));
  if (!stored) return ZYM_DB_STATUS_ERROR;
  *length = static_cast<int>(stored->size());
  return ZYM_DB_STATUS_OK;
}

int zym_db_result_column_is_null(zym_db_result_t* result, int column, int* is_null) {
  if (const int failure = client().called("is_null", std::to_string(column), result->table); failure != 0)
    return failure;
  const Cell* cell = result->cell(column);
  if (cell == nullptr) return ZYM_DB_STATUS_ERROR;
  *is_null = std::holds_alternative<std::nullptr_t>(*cell) ? 1 : 0;
  return ZYM_DB_STATUS_OK;
}

int extract_uint_column_from_result(zym_db_result_t* result, const char* column, unsigned int* value) {
  return read_number("extract_uint", result, result->index_of(column), value, column);
}
int extract_uint64_column_from_result(zym_db_result_t* result, const char* column, uint64_t* value) {
  return read_number("extract_uint64", result, result->index_of(column), value, column);
}
int extract_str_column_from_result(zym_db_result_t* result, const char* column, char* text, int size) {
  return read_text("extract_str", result, result->index_of(column), text, size, column);
}

int zym_db_free_result(zym_db_result_t* result) {
  client().calls.push_back("free_result");
  --client().live_objects;
  delete result;
  return ZYM_DB_STATUS_OK;
}

zym_db_content_values_t* zym_db_get_content_values(_zym_db_handle_t*) {
  if (client().called("get_content_values", "") != 0 || !client().has_values) return nullptr;
  ++client().live_objects;
  return new zym_db_content_values_t;
}

int zym_db_content_clear(zym_db_content_values_t* values) {
  if (const int failure = client().called("clear", ""); failure != 0) return failure;
  values->pairs.clear();
  return ZYM_DB_STATUS_OK;
}

int zym_db_content_put_text(zym_db_content_values_t* values, const char* column, const char* value) {
  return put(values, "text", column, value);
}
int zym_db_content_put_int(zym_db_content_values_t* values, const char* column, int value) {
  return put(values, "int", column, std::to_string(value));
}
int zym_db_content_put_uint(zym_db_content_values_t* values, const char* column, unsigned int value) {
  return put(values, "uint", column, std::to_string(value));
}
int zym_db_content_put_uchar(zym_db_content_values_t* values, const char* column, unsigned char value) {
  return put(values, "uchar", column, std::to_string(value));
}
int zym_db_content_put_short_uint(zym_db_content_values_t* values, const char* column, unsigned short value) {
  return put(values, "short_uint", column, std::to_string(value));
}
int zym_db_content_put_null(zym_db_content_values_t* values, const char* column) {
  return put(values, "null", column, "");
}

int zym_db_free_content_values(zym_db_content_values_t* values) {
  client().calls.push_back("free_content_values");
  --client().live_objects;
  delete values;
  return ZYM_DB_STATUS_OK;
}

int zym_db_insert(_zym_db_handle_t*, const char* table, const zym_db_content_values_t* values, int reserved,
                  int64_t* id) {
  EXPECT_EQ(reserved, 0);
  const int failure = write("insert", table, " {" + values->text() + "}");
  if (failure == 0) *id = client().inserted_id;
  return failure;
}

int zym_db_update(_zym_db_handle_t*, const char* table, const zym_db_content_values_t* values,
                  const char* where, const _zym_db_param_t* params, int nparams, int64_t*) {
  return write("update", table,
               " {" + values->text() + "} where " + text_or_null(where) + parameters(params, nparams));
}

int zym_db_delete(_zym_db_handle_t*, const char* table, const char* where, const _zym_db_param_t* params,
                  int nparams, int64_t* count) {
  const int failure = write("delete", table, " where " + text_or_null(where) + parameters(params, nparams));
  if (failure == 0 && count != nullptr) *count = client().deleted_rows;
  return failure;
}

const char* zym_db_get_error_str(int status) {
  return status == 77 ? "the scripted failure" : "another failure";
}

int ptables_from_ram(ptables_t*) {
  return client().called("ptables_from_ram", "");
}
int ptables_lookup_platform_direct(const ptables_t*, ptables_platform_t* platform) {
  if (const int failure = client().called("ptables_lookup_platform_direct", ""); failure != 0) return failure;
  platform->word[2] = client().platform_word;
  return 0;
}
void ptables_free(ptables_t*) {
  client().calls.push_back("ptables_free");
}

namespace {

template <class Number>
int read_property(const char* operation, const char* path, Number* value) {
  if (const int failure = client().called(operation, path); failure != 0) return failure;
  const auto property = client().properties.find(path);
  if (property == client().properties.end()) return ZYM_DB_STATUS_NOT_FOUND;
  *value = static_cast<Number>(property->second);
  return ZYM_DB_STATUS_OK;
}

}  // namespace

int propdb_get_dword(const char* path, unsigned int* value) {
  return read_property("propdb_get_dword", path, value);
}
int propdb_get_byte(const char* path, unsigned char* value) {
  return read_property("propdb_get_byte", path, value);
}

int cmr_api_initialize() {
  return client().called("cmr_initialize", "");
}
int cmr_set_bios_attribute_value(cmr_attribute_request_t* requests, unsigned int count) {
  std::string text;
  for (unsigned i = 0; i < count; ++i) {
    EXPECT_EQ(requests[i].status, 0u);
    for (const uint8_t byte : requests[i].reserved) EXPECT_EQ(byte, 0u);
    text += (i == 0 ? "" : ", ") + std::to_string(requests[i].kind) + ":" + requests[i].name + "=" +
            requests[i].value;
    if (i < client().attribute_outcomes.size()) requests[i].status = client().attribute_outcomes[i];
  }
  return client().called("cmr_set", "{" + text + "}");
}
int cmr_api_uninitialize() {
  return client().called("cmr_uninitialize", "");
}

namespace ruvo_log {

#define SCRIPTED_LOG(NAME, LEVEL)            \
  void NAME(const char* format, ...) {       \
    va_list arguments;                       \
    va_start(arguments, format);             \
    scripted::log(LEVEL, format, arguments); \
    va_end(arguments);                       \
  }
SCRIPTED_LOG(logErr, "error")
SCRIPTED_LOG(logInfo, "info")
SCRIPTED_LOG(logWarn, "warning")
#undef SCRIPTED_LOG

}  // namespace ruvo_log
