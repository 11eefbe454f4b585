#include "collect/write/inventory_writer.h"

#include <cstddef>

#include "collect/write/table_writer.h"

namespace zymdb::collect {

std::vector<TableSummary> write_inventory(_zym_db_handle_t* handle, std::vector<TableContent> tables,
                                          const Observer& observer) {
  size_t total = 0;
  for (const auto& content : tables) total += content.rows.size();
  size_t done = 0;
  const auto report = [&] {
    if (observer.progress) observer.progress(done, total);
  };
  report();
  std::vector<TableSummary> summaries;
  for (auto& content : tables) {
    TableWriter writer(handle, content);
    for (const auto& row : content.rows) {
      writer.write(row);
      ++done;
      report();
    }
    writer.remove_rest();
    auto summary = writer.summary();
    if (content.write_further) content.write_further(summary);
    content.rows = {};
    if (content.is_told || summary.changed() != 0) summaries.push_back(summary);
  }
  return summaries;
}

}  // namespace zymdb::collect
