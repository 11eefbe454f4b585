// The inventory as it is now, read once for all who ask until somebody changes it.
#ifndef ZYMDB_SERVICE_INVENTORY_CURRENT_H
#define ZYMDB_SERVICE_INVENTORY_CURRENT_H

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "documents/document.h"

namespace zymdb::service {

class Current {
 public:
  using DocumentPtr = std::shared_ptr<const documents::Document>;

  // The file is of PCI devices' names, which are read with each document and not kept: they are larger than
  // it.
  explicit Current(std::string names_file);

  const std::vector<documents::RecordType>& types() const { return types_; }

  // The inventory of this moment: the same document as before unless somebody has committed since. Costs next
  // to nothing then. Throws DatabaseError when it cannot be read. For any thread.
  DocumentPtr get();

 private:
  void read();

  const std::string names_file_;
  const std::vector<documents::RecordType> types_;
  std::mutex mutex_;
  DocumentPtr last_;
};

}  // namespace zymdb::service

#endif
