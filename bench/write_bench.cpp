// A report of one adapter function: unchanged, where nothing is to be written, and changed.
#include <benchmark/benchmark.h>

#include "db/database_client.h"
#include "inventory.h"
#include "raw_sqlite.h"

namespace {

constexpr int kAdapters = 256;

bench::Inventory& inventory() {
  static bench::Inventory inventory(kAdapters);
  return inventory;
}

// Reports the health of a function through the record helper; changed when `health` differs.
bool report(_zym_db_handle_t* handle, zym_db_content_values_t* values, int adapter, unsigned health) {
  const std::string where = "PCIFuncKey=" + std::to_string(bench::Inventory::function_key(adapter, 0));
  const std::string filter = "HealthStatus!=" + std::to_string(health);
  zym_db_content_clear(values);
  zym_db_content_put_uint(values, "HealthStatus", health);
  return insert_or_update_db_record(handle, "PCIAdapter", where.c_str(), values, filter.c_str()) >= 1;
}

void Library(benchmark::State& state, bool is_changing) {
  inventory();
  _zym_db_handle_t* const handle = get_dmdb_handle();
  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  unsigned health = 1;
  int adapter = 0;
  for (int i = 0; i < kAdapters; ++i) report(handle, values, i, health);
  inventory().mark();
  for (auto _ : state) {
    adapter = (adapter + 37) % kAdapters;
    if (is_changing) ++health;
    if (!report(handle, values, adapter, health)) state.SkipWithError("no row");
  }
  if (inventory().is_written_since_mark() != is_changing) state.SkipWithError("wrong bytes written");
  zym_db_free_content_values(values);
}

// The same two statements: the row is located, and then updated where it differs.
class RawReport {
 public:
  explicit RawReport(sqlite3* connection)
      : find_(bench::prepare(connection, "SELECT _id FROM PCIAdapter WHERE PCIFuncKey=?")),
        update_(bench::prepare(connection,
                               "UPDATE PCIAdapter SET HealthStatus=? WHERE _id=? AND HealthStatus!=?")) {}

  bool report(int adapter, unsigned health) {
    sqlite3_bind_int64(find_.get(), 1, bench::Inventory::function_key(adapter, 0));
    const bool is_found = sqlite3_step(find_.get()) == SQLITE_ROW;
    const int64_t id = is_found ? sqlite3_column_int64(find_.get(), 0) : 0;
    sqlite3_reset(find_.get());
    sqlite3_bind_int64(update_.get(), 1, health);
    sqlite3_bind_int64(update_.get(), 2, id);
    sqlite3_bind_int64(update_.get(), 3, health);
    const bool is_written = sqlite3_step(update_.get()) == SQLITE_DONE;
    sqlite3_reset(update_.get());
    return is_found && is_written;
  }

 private:
  bench::Prepared find_;
  bench::Prepared update_;
};

void KeptStatement(benchmark::State& state, bool is_changing) {
  const auto connection = bench::open_raw(inventory().path());
  RawReport raw(connection.get());
  unsigned health = 1;
  int adapter = 0;
  for (int i = 0; i < kAdapters; ++i) raw.report(i, health);
  for (auto _ : state) {
    adapter = (adapter + 37) % kAdapters;
    if (is_changing) ++health;
    if (!raw.report(adapter, health)) state.SkipWithError("no row");
  }
}

void PreparedPerCall(benchmark::State& state, bool is_changing) {
  const auto connection = bench::open_raw(inventory().path());
  unsigned health = 1;
  int adapter = 0;
  for (int i = 0; i < kAdapters; ++i) RawReport(connection.get()).report(i, health);
  for (auto _ : state) {
    adapter = (adapter + 37) % kAdapters;
    if (is_changing) ++health;
    if (!RawReport(connection.get()).report(adapter, health)) state.SkipWithError("no row");
  }
}

BENCHMARK_CAPTURE(KeptStatement, unchanged, false)->Name("unchanged report/kept statement");
BENCHMARK_CAPTURE(Library, unchanged, false)->Name("unchanged report/library");
BENCHMARK_CAPTURE(PreparedPerCall, unchanged, false)->Name("unchanged report/prepared per call");
BENCHMARK_CAPTURE(KeptStatement, changed, true)->Name("changed report/kept statement");
BENCHMARK_CAPTURE(Library, changed, true)->Name("changed report/library");
BENCHMARK_CAPTURE(PreparedPerCall, changed, true)->Name("changed report/prepared per call");

}  // namespace

BENCHMARK_MAIN();
