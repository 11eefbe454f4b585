// What a collection tells whoever asked for it.
#ifndef ZYMDB_COLLECT_ROWS_REPORT_H
#define ZYMDB_COLLECT_ROWS_REPORT_H

#include <cstddef>
#include <functional>
#include <string_view>

namespace zymdb::collect {

// Who is told what happens meanwhile. Each function may be empty. All are called on the calling thread.
struct Observer {
  std::function<void(std::string_view line)> notice;  // one line without a line end: a source that is missing
                                                      // and skipped, a PCI domain that got another number
  std::function<void(size_t done, size_t total)> progress;  // rows compared with the inventory so far;
                                                            // first (0, total), last (total, total)
  // A line about what does not answer; where this is empty, a notice.
  std::function<void(std::string_view line)> silence = {};
};

// What became of the rows of one table.
struct TableSummary {
  std::string_view table;  // the table's name
  size_t inserted = 0;
  size_t updated = 0;
  size_t removed = 0;
  size_t unchanged = 0;

  size_t changed() const { return inserted + updated + removed; }
};

}  // namespace zymdb::collect

#endif
