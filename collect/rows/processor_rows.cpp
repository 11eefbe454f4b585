#include "collect/rows/processor_rows.h"

#include <cstddef>

#include "collect/rows/row_columns.h"

namespace zymdb::collect {
namespace {

using Processor = SmbiosProcessor;

template <auto Field>
Value processor_number(const Processor& processor) {
  return number_or_null(processor.*Field);
}

template <auto Field>
Value processor_text(const Processor& processor) {
  return text_or_null(processor.*Field);
}

template <size_t Level, auto Field>
Value cache_number(const Processor& processor) {
  return number_or_null(processor.caches[Level - 1].*Field);
}

template <auto Field>
constexpr Column<Processor> number_column(const char* name) {
  return {{name, Role::kValue}, processor_number<Field>};
}

template <auto Field>
constexpr Column<Processor> text_column(const char* name, Role role = Role::kValue) {
  return {{name, role, Kind::kText}, processor_text<Field>};
}

template <size_t Level, auto Field>
constexpr Column<Processor> cache_column(const char* name) {
  return {{name, Role::kValue}, cache_number<Level, Field>};
}

constexpr Column<Processor> kProcessorColumns[] = {
    text_column<&Processor::socket>("Socket", Role::kKey),
    number_column<&Processor::id>("ProcId"),
    number_column<&Processor::type>("ProcType"),
    number_column<&Processor::family>("Family"),
    text_column<&Processor::manufacturer>("Manufacturer"),
    text_column<&Processor::version>("Version"),
    number_column<&Processor::voltage>("Voltage"),
    number_column<&Processor::external_clock>("ExtClock"),
    number_column<&Processor::max_speed>("MaxSpeed"),
    number_column<&Processor::current_speed>("CurSpeed"),
    number_column<&Processor::status>("Status"),
    number_column<&Processor::upgrade>("Upgrade"),
    text_column<&Processor::serial_number>("SerialNo"),
    text_column<&Processor::asset_tag>("AssetTag"),
    text_column<&Processor::part_number>("PartNo"),
    number_column<&Processor::core_count>("CoreCount"),
    number_column<&Processor::cores_enabled>("CoreEnabled"),
    number_column<&Processor::thread_count>("ThreadCount"),
    number_column<&Processor::characteristics>("Characteristics"),
    cache_column<1, &SmbiosCache::max_size>("L1CacheMaxSize"),
    cache_column<1, &SmbiosCache::installed>("L1CacheInstalled"),
    cache_column<1, &SmbiosCache::type>("L1CacheType"),
    cache_column<1, &SmbiosCache::configuration>("L1CacheConfig"),
    cache_column<2, &SmbiosCache::max_size>("L2CacheMaxSize"),
    cache_column<2, &SmbiosCache::installed>("L2CacheInstalled"),
    cache_column<2, &SmbiosCache::type>("L2CacheType"),
    cache_column<2, &SmbiosCache::configuration>("L2CacheConfig"),
    cache_column<3, &SmbiosCache::max_size>("L3CacheMaxSize"),
    cache_column<3, &SmbiosCache::installed>("L3CacheInstalled"),
    cache_column<3, &SmbiosCache::type>("L3CacheType"),
    cache_column<3, &SmbiosCache::configuration>("L3CacheConfig"),
    {{"NodeIndex", Role::kValue}, only_node},
};

}  // namespace

TableContent processor_rows(const std::vector<SmbiosProcessor>& processors) {
  auto content = make_content("Processor", kProcessorColumns);
  for (const auto& processor : processors) add_row(content, kProcessorColumns, processor, true);
  return content;
}

}  // namespace zymdb::collect
