// Every call of every exported operation to the database client fails once, each in turn.
#include <cxxabi.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <set>
#include <string_view>

#include "faults/example_rows.h"
#include "faults/expected_outcomes.h"
#include "faults/operations.h"
#include "faults/shared_files.h"
#include "support/scripted_client.h"

using scripted::Answer;
using scripted::Cell;
using scripted::client;
using scripted::NumberedCall;

namespace faults {

void PrintTo(const Scenario& scenario, std::ostream* stream);
void PrintTo(const Scenario& scenario, std::ostream* stream) {
  *stream << scenario.operation << " " << scenario.situation;
}

namespace {

constexpr std::string_view kReaders[] = {
    "uint", "int",   "uint64",  "int64",        "uchar",          "short_uint", "text",
    "blob", "bytes", "is_null", "extract_uint", "extract_uint64", "extract_str"};

Cell cell(const ExampleRow& row, const std::string& column) {
  const auto stated = row.find(column);
  if (stated == row.end()) return scripted::EitherWay{1};
  if (const auto* number = std::get_if<int64_t>(&stated->second)) return scripted::EitherWay{*number};
  return std::get<std::string>(stated->second);
}

const std::vector<ExampleRow>& rows_of(const scripted::Question& question, const Scenario& scenario) {
  for (const Replacement& replacement : scenario.replacements)
    if (replacement.table == question.table && question.where.find(replacement.filter) != std::string::npos)
      return replacement.rows;
  return example_rows().at(question.table);
}

// All rows of the table, whatever the filter. A query for all columns finds those that the rows state.
Answer answer(const scripted::Question& question, const Scenario& scenario) {
  const std::vector<ExampleRow>& rows = rows_of(question, scenario);
  Answer answer;
  answer.names = question.columns;
  if (answer.names.empty())
    for (const ExampleRow& row : rows)
      for (const auto& [column, value] : row) answer.names.push_back(column);
  for (const ExampleRow& row : rows) {
    scripted::Row& cells = answer.rows.emplace_back();
    for (const std::string& column : answer.names) cells.push_back(cell(row, column));
  }
  return answer;
}

struct Observed {
  Outcome outcome;
  std::vector<NumberedCall> calls;
};

// Runs the scenario's operation with a client of its own, one call of which may fail.
Observed run(const Scenario& scenario, const std::optional<NumberedCall>& failing = std::nullopt) {
  const scripted::FreshClient fresh;
  client().tables = [&](const scripted::Question& question) { return answer(question, scenario); };
  client().platform_word = 0xFFFFFFFF;  // every feature a platform can have
  if (failing) client().failures[*failing] = kFailure;
  const Outcome outcome = operation(scenario.operation).call();
  return {outcome, client().sequence};
}

// The operation of a call as the table of consequences names it.
std::string_view kind_of(std::string_view operation) {
  if (operation == "raw_query" || operation == "failing result") return "query";
  return std::ranges::find(kReaders, operation) != std::end(kReaders) ? "read" : operation;
}

bool names(std::string_view pattern, const NumberedCall& call) {
  const std::string_view name = call.first;
  const size_t space = name.starts_with("failing result") ? name.find(' ', 8) : name.find(' ');
  const std::string_view operation = name.substr(0, space);
  const std::string table(space != std::string_view::npos ? name.substr(space) : "");
  const std::string number = "#" + std::to_string(call.second);
  for (const std::string& spelt : {std::string(operation), std::string(kind_of(operation))})
    for (const std::string& spelling : {spelt, spelt + table, spelt + table + number})
      if (pattern == spelling) return true;
  return false;
}

class CallFault : public testing::TestWithParam<Scenario> {};

TEST_P(CallFault, HasTheStatedOutcome) {
  const Scenario& scenario = GetParam();
  const SharedFiles shared_files(scenario.operation);
  run(scenario);  // what is read once per process is read here
  const Observed success = run(scenario);
  EXPECT_EQ(success.outcome, scenario.success);

  std::vector<bool> met(scenario.consequences.size());
  for (const NumberedCall& failing : success.calls) {
    SCOPED_TRACE(failing.first + "#" + std::to_string(failing.second));
    const Outcome outcome = run(scenario, failing).outcome;
    const auto expected = std::ranges::find_if(scenario.consequences, [&](const Consequence& consequence) {
      return names(consequence.call, failing);
    });
    if (expected == scenario.consequences.end()) {
      ADD_FAILURE() << "no outcome is stated; it is " << outcome;
      continue;
    }
    met[static_cast<size_t>(expected - scenario.consequences.begin())] = true;
    EXPECT_EQ(outcome.status, expected->status);
    EXPECT_THAT(outcome.outputs, expected->outputs != nullptr
                                     ? testing::Matcher<std::string>(expected->outputs)
                                     : testing::Ne("torn"));
  }
  for (size_t i = 0; i < met.size(); ++i)
    EXPECT_TRUE(met[i]) << scenario.consequences[i].call << " is never called";
}

std::string name_of(const testing::TestParamInfo<Scenario>& scenario) {
  return std::string(scenario.param.operation) + (*scenario.param.situation != '\0' ? "_" : "") +
         scenario.param.situation;
}
INSTANTIATE_TEST_SUITE_P(Operation, CallFault, testing::ValuesIn(scenarios()), name_of);

// The exported names as a programmer writes them.
std::set<std::string> exported_names() {
  std::ifstream list(EXPORTS);
  EXPECT_TRUE(list.good()) << EXPORTS;
  std::set<std::string> names;
  for (std::string line; std::getline(list, line);) {
    if (line.empty() || line.starts_with('#')) continue;
    int status = 0;
    char* const demangled = abi::__cxa_demangle(line.c_str(), nullptr, nullptr, &status);
    std::string name = demangled != nullptr ? demangled : line;
    std::free(demangled);
    names.insert(name.substr(0, name.find_first_of("[(")));
  }
  return names;
}

TEST(FaultedOperations, AreAllThatAreExported) {
  std::set<std::string> called;
  for (const Operation& operation : operations()) called.insert(operation.name);
  EXPECT_EQ(called, exported_names());

  std::set<std::string> swept;
  for (const Scenario& scenario : scenarios()) swept.insert(scenario.operation);
  EXPECT_EQ(swept, exported_names());
}

}  // namespace
}  // namespace faults
