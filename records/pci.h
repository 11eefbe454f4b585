// PCI functions, adapters, graphics and accelerator chips, and the accelerator cards that the library knows.
#ifndef ZYMDB_RECORDS_PCI_H
#define ZYMDB_RECORDS_PCI_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/pci_address.h"
#include "records/reading.h"
#include "records/record.h"
#include "zymdb_pci.h"

namespace zymdb::records {

// Names of vendors, devices and classes.
inline constexpr char kPciIdsFile[] = "/usr/share/misc/pci.ids";

// All functions, by key.
std::vector<_ZYMDB_PCI_Generic> list_functions(const Reading& reading);

RecordType adapters();

// With the names of a file, which is read when a name is first asked for. The system's own may be missing.
RecordType functions(std::shared_ptr<const std::string> names_file);

RecordType gpus();

using Cards = std::vector<_ZYMDB_HC_Card>;
Cards list_cards();
RecordType cards(std::function<Cards()> list = list_cards);

}  // namespace zymdb::records

#endif
