#include "collect/write/port_context.h"

#include <chrono>

#include "collect/write/stored_rows.h"

namespace zymdb::collect {
namespace {

CounterSamples read_samples(_zym_db_handle_t* handle) {
  CounterSamples samples;
  const auto read = [&samples](zym_db_result_t* row) {
    uint32_t function = 0;
    unsigned index = 0;
    CounterSample sample;
    if (zym_db_result_column_uint(row, 0, &function) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint(row, 1, &index) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(row, 2, &sample.counters.sent) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(row, 3, &sample.counters.received) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_int64(row, 4, &sample.taken_at) == ZYM_DB_STATUS_OK)
      samples[{FunctionKey(function), index}] = sample;
  };
  for_each_row(handle, "PCIPhysicalPortCounter", {"PCIFuncKey", "Idx", "TxBytes", "RxBytes", "SampledAt"},
               nullptr, read);
  return samples;
}

}  // namespace

PortContext read_port_context(_zym_db_handle_t* handle) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return {std::chrono::duration_cast<milliseconds>(now).count(), read_samples(handle),
          read_functions(handle, "PCIAdapter", "AIMSupported!=0")};
}

}  // namespace zymdb::collect
