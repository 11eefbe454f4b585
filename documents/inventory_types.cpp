#include "documents/inventory_types.h"

#include <memory>

#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "records/network.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "records/storage.h"
#include "records/system.h"

namespace zymdb::documents {

std::vector<records::RecordType> inventory_types(const std::string& names_file) {
  using namespace records;
  return {system(),
          processors(),
          memory_modules(),
          adapters(),
          functions(std::make_shared<std::string>(names_file)),
          gpus(),
          physical_ports(),
          logical_ports(),
          firmware_components(),
          pldm_devices(),
          embedded_devices(),
          drives(),
          settings()};
}

}  // namespace zymdb::documents
