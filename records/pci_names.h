// Names of PCI vendors, devices and classes, for whoever prints functions.
#ifndef ZYMDB_RECORDS_PCI_NAMES_H
#define ZYMDB_RECORDS_PCI_NAMES_H

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "collect/sources/pci/pci_ids.h"
#include "common/source_file.h"
#include "records/pci.h"

namespace zymdb::records {

// The names, read when a field of any thread first asks for one. The system's list may be missing; one that
// the user names may not.
class PciNames {
 public:
  explicit PciNames(std::shared_ptr<const std::string> file) : file_(std::move(file)) {}

  const collect::PciIds& get() {
    std::call_once(loaded_, [this] { ids_ = load(); });
    return ids_;
  }

 private:
  collect::PciIds load() const {
    try {
      return collect::PciIds::load(*file_);
    } catch (const SourceError&) {
      if (*file_ != kPciIdsFile) throw;
      return {};
    }
  }

  std::shared_ptr<const std::string> file_;
  std::once_flag loaded_;
  collect::PciIds ids_;
};

}  // namespace zymdb::records

#endif
