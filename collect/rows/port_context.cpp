#include "collect/rows/port_context.h"

#include <chrono>
#include <cstddef>
#include <string>

#include "common/client_objects.h"

namespace zymdb::collect {
namespace {

// Calls `read` for each row that matches.
template <size_t N, class Read>
void for_each_row(_zym_db_handle_t* handle, const char* table, const char* const (&columns)[N],
                  const char* where, Read read) {
  zym_db_result_t* raw = nullptr;
  int status = zym_db_query(handle, table, columns, static_cast<int>(N), where, nullptr, 0, 0, &raw);
  const ResultPtr result(raw);
  if (status == ZYM_DB_STATUS_OK && result) {
    while ((status = zym_db_result_step(result.get())) == ZYM_DB_STATUS_ROW) read(result.get());
  }
  if (status != ZYM_DB_STATUS_DONE) throw DatabaseError(std::string("cannot read table ") + table);
}

CounterSamples read_samples(_zym_db_handle_t* handle) {
  constexpr const char* kColumns[] = {"PCIFuncKey", "Idx", "TxBytes", "RxBytes", "SampledAt"};
  CounterSamples samples;
  for_each_row(handle, "PCIPhysicalPortCounter", kColumns, nullptr, [&](zym_db_result_t* row) {
    unsigned function = 0;
    unsigned index = 0;
    CounterSample sample;
    if (zym_db_result_column_uint(row, 0, &function) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint(row, 1, &index) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(row, 2, &sample.counters.sent) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(row, 3, &sample.counters.received) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_int64(row, 4, &sample.taken_at) == ZYM_DB_STATUS_OK)
      samples[{function, index}] = sample;
  });
  return samples;
}

std::set<uint32_t> read_managed_functions(_zym_db_handle_t* handle) {
  constexpr const char* kColumns[] = {"PCIFuncKey"};
  std::set<uint32_t> functions;
  for_each_row(handle, "PCIAdapter", kColumns, "AIMSupported!=0", [&](zym_db_result_t* row) {
    unsigned function = 0;
    if (zym_db_result_column_uint(row, 0, &function) == ZYM_DB_STATUS_OK) functions.insert(function);
  });
  return functions;
}

}  // namespace

PortContext read_port_context(_zym_db_handle_t* handle) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration_cast<milliseconds>(now).count(), read_samples(handle),
          read_managed_functions(handle)};
}

}  // namespace zymdb::collect
