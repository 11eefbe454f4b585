// Listings without options of their own.
#include "records/cpu_mem.h"
#include "records/firmware.h"
#include "records/pci.h"
#include "records/pci_settings.h"
#include "records/storage.h"
#include "records/system.h"
#include "records/vpds.h"
#include "show/listing.h"
#include "show/listings.h"

namespace zymdb::tool {
namespace {

struct WholeListing {
  records::RecordType type;
  const char* examples;
};

std::vector<WholeListing> whole_listings() {
  return {
      {records::system(),
       "  zymdb show system\n"
       "  zymdb show system --json | jq -r '.system[].UUID'"},
      {records::processors(),
       "  zymdb show processors\n"
       "  zymdb show processors --columns SOCKET,VERSION,CORES,THREADS --no-headings\n"
       "  zymdb show processors --json"},
      {records::memory_modules(),
       "  zymdb show memory\n"
       "  zymdb show memory --columns SLOT,LOCATOR,SIZE,SERIAL --no-headings\n"
       "  zymdb show memory --json | jq '[.memory[].MemSize] | add'"},
      {records::adapters(),
       "  zymdb show adapters\n"
       "  zymdb show adapters --columns PLACE,ADDRESS,NAME\n"
       "  zymdb show adapters --json | jq -r '.adapters[].CardName'"},
      {records::vital_product_data(),
       "  zymdb show vpd\n"
       "  zymdb show vpd --columns FUNCTION,SERIAL,PART --no-headings\n"
       "  zymdb show vpd --json | jq -r '.vpd[].SerialNo'"},
      {records::gpus(),
       "  zymdb show gpus\n"
       "  zymdb show gpus --columns FUNCTION,NAME,MEMORY --no-headings\n"
       "  zymdb show gpus --json | jq '.gpus[] | select(.GPUChipManufacturer == \"NVIDIA\")'"},
      {records::backplanes(),
       "  zymdb show backplanes\n"
       "  zymdb show backplanes --json | jq '.backplanes[].MaxDrives'"},
      {records::firmware_components(),
       "  zymdb show firmware\n"
       "  zymdb show firmware --columns FUNCTION,NAME,VERSION\n"
       "  zymdb show firmware --json | jq '.firmware[] | select(.Manufacture == \"Intel\")'"},
      {records::embedded_devices(),
       "  zymdb show embedded\n"
       "  zymdb show embedded --json | jq -r '.embedded[].DeviceName'"},
      {records::settings(),
       "  zymdb show settings\n"
       "  zymdb show settings --columns FUNCTION,SETTING,CURRENT,CHOICES\n"
       "  zymdb settings list 4b:00.0            those of one function"},
  };
}

}  // namespace

void add_show_whole(CommandTree& tree, CLI::App& show) {
  for (auto& [type, examples] : whole_listings()) add_listing(tree, show, {std::move(type), examples});
}

}  // namespace zymdb::tool
