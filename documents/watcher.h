// What becomes of the open inventory from now on.
#ifndef ZYMDB_DOCUMENTS_WATCHER_H
#define ZYMDB_DOCUMENTS_WATCHER_H

#include <vector>

#include "documents/difference.h"
#include "documents/history.h"

namespace zymdb::documents {

class Watcher {
 public:
  // Reads the inventory as it is now. Throws DatabaseError when it cannot be read, as look() does.
  Watcher(std::vector<RecordType> types, const DifferenceOptions& options);

  // Whether somebody has committed since the last look. Costs next to nothing while nobody does.
  bool has_news() const;

  // What has changed since the last look, or the beginning. What comes into an inventory that nobody has
  // written yet is its baseline.
  Event look();

 private:
  std::vector<RecordType> types_;
  DifferenceOptions options_;
  Document last_;
};

}  // namespace zymdb::documents

#endif
