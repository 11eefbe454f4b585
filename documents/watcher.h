// What becomes of the open inventory from now on.
#ifndef ZYMDB_DOCUMENTS_WATCHER_H
#define ZYMDB_DOCUMENTS_WATCHER_H

#include <vector>

#include "documents/difference.h"

namespace zymdb::documents {

class Watcher {
 public:
  // Reads the inventory as it is now. Throws DatabaseError when it cannot be read, as look() does.
  Watcher(std::vector<RecordType> types, const DifferenceOptions& options);

  // Whether somebody has committed since the last look. Costs next to nothing while nobody does.
  bool has_news() const;

  // What has changed since the last look, or the beginning.
  std::vector<Change> look();

  // Of the last look; nothing where the inventory has none.
  std::optional<uint64_t> generation() const { return last_.generation; }

 private:
  std::vector<RecordType> types_;
  DifferenceOptions options_;
  Document last_;
};

}  // namespace zymdb::documents

#endif
