// What differs between two inventories, part by part, beside SQLite's comparison of their rows and beside a
// look at every value of two documents whose parts are known to lie in one order.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>

#include "comparison.h"
#include "documents/difference.h"
#include "documents/inventory_types.h"

using bench::Statements;
using zymdb::documents::Document;
using zymdb::documents::Part;
using zymdb::documents::PartClass;

namespace {

constexpr int kParts = 10'000;

constexpr char kRowsOfSqlite[] = "rows";

// One part in a hundred has another name, one is gone and one is new.
constexpr size_t kChanges = kParts / 100 + 2;
constexpr int64_t kChangedRows = kParts / 100 + 1;

// Adapters, of which the inventories have four for each of their rows.
const zymdb::records::RecordType& adapters() {
  static const auto types = zymdb::documents::inventory_types("");
  return *std::ranges::find(types, "adapters", &zymdb::records::RecordType::name);
}

Document first_parts(int rows) {
  bench::inventory(rows);
  Document document{std::nullopt, {zymdb::documents::read_class(adapters())}};
  auto& parts = document.classes.front().parts;
  if (parts.size() < static_cast<size_t>(kParts)) throw std::runtime_error("too few parts");
  parts.resize(kParts);
  return document;
}

Document changed(Document document) {
  PartClass& of = document.classes.front();
  const size_t name = of.field("CardName").value();
  for (size_t i = 0; i < of.parts.size(); i += 100) of.parts[i][name] = std::string("another name");
  of.parts.erase(of.parts.begin() + 5001);
  of.parts.push_back(of.parts.front());
  of.parts.back()[of.field("PCIKey").value()] = uint64_t{0x7FFFFFFF};
  return document;
}

size_t unequal_values(const Document& one, const Document& other) {
  size_t count = 0;
  const auto& parts = one.classes.front().parts;
  for (size_t i = 0; i < parts.size(); ++i) {
    for (size_t j = 0; j < parts[i].size(); ++j)
      count += parts[i][j] != other.classes.front().parts[i][j] ? 1 : 0;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  static const Document before = first_parts(kParts), same = before, after = changed(before);
  static const bench::Connection connection = bench::open_raw(bench::inventory(kParts).path());
  bench::execute(
      connection.get(),
      "CREATE TEMP TABLE Former AS SELECT * FROM PCIAdapter ORDER BY _id LIMIT 10000;"
      "CREATE TEMP TABLE Present AS SELECT * FROM Former;"
      "UPDATE Present SET CardName='another name' WHERE _id%100=0; DELETE FROM Present WHERE _id=5001;"
      "INSERT INTO Present (_id,PCIKey) VALUES (99999,1)");
  static Statements compared(
      connection.get(),
      std::vector{"SELECT count(*) FROM (SELECT * FROM Former EXCEPT SELECT * FROM Present)",
                  "SELECT count(*) FROM (SELECT * FROM Present EXCEPT SELECT * FROM Former)"});
  const auto count_rows = [](size_t statement) {
    int64_t count = 0;
    compared.one(statement, [&](bench::Columns row) { count = row.number().value; });
    return count;
  };
  bench::add(
      "difference of two inventories", kParts,
      {{bench::kLibrary, [](int) { return zymdb::documents::difference(before, after).size() == kChanges; }},
       {bench::kLimit, [](int) { return unequal_values(before, same) == 0; }},
       {kRowsOfSqlite, [=](int) { return count_rows(0) == kChangedRows && count_rows(1) == kChangedRows; }}});
  benchmark::RunSpecifiedBenchmarks();
}
