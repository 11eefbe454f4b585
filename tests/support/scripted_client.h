// A database client that follows a script: it hands out prepared rows, records every call, and fails any of
// them. A test program that links it is the client of the library under test.
#ifndef ZYMDB_TESTS_SUPPORT_SCRIPTED_CLIENT_H
#define ZYMDB_TESTS_SUPPORT_SCRIPTED_CLIENT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "controller/database_client.h"

namespace scripted {

// Reads as a number and as a text.
struct EitherWay {
  int64_t value;
};

using Cell = std::variant<std::nullptr_t, int64_t, std::string, EitherWay>;

// One row. Integers, texts and nulls as they stand: Row{7, "name", nullptr}.
struct Row : std::vector<Cell> {
  template <class... Cells>
  explicit Row(Cells... cells) : std::vector<Cell>{cell(cells)...} {}

  template <class T>
  static Cell cell(T value) {
    if constexpr (std::is_integral_v<T>)
      return static_cast<int64_t>(value);
    else if constexpr (std::is_null_pointer_v<T>)
      return nullptr;
    else
      return std::string(value);
  }
};

// The answer to one query.
struct Answer {
  int status = 0;
  bool has_result = true;
  std::vector<std::string> names{};  // of the columns, for reads by name
  std::vector<Row> rows{};
  int end = ZYM_DB_STATUS_DONE;         // the step's code after the last row
  std::optional<unsigned> row_count{};  // what the client says it is, when not the truth

  static Answer of(std::vector<Row> rows) { return {.rows = std::move(rows)}; }
  static Answer failing(int status, bool has_result = false) {
    return {.status = status, .has_result = has_result};
  }
  static Answer without_result() { return {.has_result = false}; }
};

// What a query asks for.
struct Question {
  std::string table;
  std::vector<std::string> columns;  // none: all of them
  std::string where;
};

// A call, as the n-th (from 0) of its operation.
using NumberedCall = std::pair<std::string, int>;

class Client {
 public:
  bool has_database = true;
  bool has_values = true;  // whether a value set can be had

  bool has_properties = true;                  // whether the property database can be opened
  std::map<std::string, uint32_t> properties;  // those that are read by path

  // Queries are answered in this order; one more than there are answers is a failure of the test.
  std::deque<Answer> answers;

  // Answers the queries instead, where there is one: as a database would that knows its tables.
  std::function<Answer(const Question&)> tables;

  // What the n-th call of an operation answers instead of doing its work: {"update", 0}, or for one table
  // {"update PCIAdapter", 0}. "handle" is the call for the database; a failure of "result" is a query's
  // success without a result, of "failing result" a failed query that hands out a result all the same.
  std::map<NumberedCall, int> failures;

  // Whether a text read that is made to fail hands out the text all the same.
  bool failed_texts_arrive = false;

  // The status words that the BIOS configuration manager writes, request by request; 0 where there is none.
  std::vector<uint32_t> attribute_outcomes;

  int64_t inserted_id = 1;
  int64_t deleted_rows = 0;
  uint32_t platform_word = 0;  // the third of the platform's entry

  std::vector<std::string> calls;       // every call, with its arguments
  std::vector<std::string> statements;  // the calls that read or write tables
  std::vector<NumberedCall> sequence;   // the calls that can fail, with their tables
  std::vector<std::string> log;         // "error: …", "info: …", "warning: …"
  int live_objects = 0;                 // results, value sets and connections not yet freed

  // Records a call; the status that the script makes it fail with, or 0.
  int called(const std::string& operation, const std::string& arguments, const std::string& table = "");

  // The same without a record among `calls`.
  int failure_of(const std::string& operation, const std::string& table = "");

 private:
  std::map<std::string, int> counts_;
};

// The client of the running test.
Client& client();

// A fresh client; sees to it that every object was freed.
class FreshClient {
 public:
  FreshClient();
  ~FreshClient();
  FreshClient(const FreshClient&) = delete;
  FreshClient& operator=(const FreshClient&) = delete;
};

// Gives each test a client of its own.
class ClientTest : public testing::Test {
 protected:
  void answer(std::vector<Row> rows) { client().answers.push_back(Answer::of(std::move(rows))); }
  void answer(Answer answer) { client().answers.push_back(std::move(answer)); }

 private:
  FreshClient client_;
};

}  // namespace scripted

#endif
