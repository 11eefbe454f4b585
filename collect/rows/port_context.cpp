#include "collect/rows/port_context.h"

#include <chrono>
#include <memory>

#include "collect/write/inventory_writer.h"
#include "controller/database_client.h"
#include "zymdb_pci.h"

namespace zymdb::collect {
namespace {

constexpr const char* kSampleColumns[] = {"PCIFuncKey", "Idx", "TxBytes", "RxBytes", "SampledAt"};
constexpr unsigned kNotManaged = 0;

CounterSamples read_samples(_zym_db_handle_t* handle) {
  zym_db_result_t* raw = nullptr;
  const int status = zym_db_query(handle, "PCIPhysicalPortCounter", kSampleColumns,
                                  static_cast<int>(std::size(kSampleColumns)), nullptr, nullptr, 0, 0, &raw);
  const std::unique_ptr<zym_db_result_t, decltype(&zym_db_free_result)> result(raw, zym_db_free_result);
  if (status != ZYM_DB_STATUS_OK || !result) throw DatabaseError("cannot read table PCIPhysicalPortCounter");
  CounterSamples samples;
  while (zym_db_result_step(result.get()) == ZYM_DB_STATUS_ROW) {
    unsigned function = 0;
    unsigned index = 0;
    CounterSample sample;
    if (zym_db_result_column_uint(result.get(), 0, &function) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint(result.get(), 1, &index) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(result.get(), 2, &sample.counters.sent) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_uint64(result.get(), 3, &sample.counters.received) == ZYM_DB_STATUS_OK &&
        zym_db_result_column_int64(result.get(), 4, &sample.taken_at) == ZYM_DB_STATUS_OK)
      samples[{function, index}] = sample;
  }
  return samples;
}

}  // namespace

PortContext read_port_context(_zym_db_handle_t* handle, const Machine& machine) {
  using std::chrono::milliseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  PortContext context{std::chrono::duration_cast<milliseconds>(now).count(), read_samples(handle), {}};
  for (const auto& function : *machine.functions) {
    unsigned type = kNotManaged;
    const int status = zymdb_get_pci_function_oob_type(function.key, &type);
    if (status == ZYM_DB_STATUS_OK && type != kNotManaged) context.foreign_functions.insert(function.key);
  }
  return context;
}

}  // namespace zymdb::collect
