#include "db/code_text.h"
#include "db/query.h"
#include "pci/connector_type.h"
#include "pci/function_lookup.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_Misc;

constexpr uint16_t kPackageModule = 9;
constexpr uint16_t kPackageOnboard = 0x8000;

constexpr CodeText kPackageTypes[] = {
    {1, "Other"},
    {2, "Rack"},
    {3, "Chassis/Frame"},
    {4, "Cross Connect/Backplane"},
    {5, "Container/Frame Slot"},
    {6, "Power Supply"},
    {7, "Fan"},
    {8, "Sensor"},
    {kPackageModule, "Module/Card"},
    {10, "Port/Connector"},
    {11, "Battery"},
    {12, "Processor"},
    {13, "Memory"},
    {14, "Power Source/Generator"},
    {15, "Storage Media Package"},
    {16, "Blade"},
    {17, "Blade Expansion"},
    {kPackageOnboard, "Onboard"},
};

constexpr Column kMiscColumns[] = {
    ZYMDB_FIELD(Record, MaxDataWidth),
    ZYMDB_NUMBER_IN_TEXT("ConnectorLayout", Record, ConnectorType, 0),
    ZYMDB_NUMBER_IN_TEXT("PackageType", Record, PackageType, 0),
    ZYMDB_FIELD(Record, OtherPackageType),
    ZYMDB_FIELD(Record, AIMSpecVersion),
};

// A connector that is not recorded follows from where the function sits.
uint16_t connector_at(uint32_t location) {
  if (location == ZYMDB_LOCATION_BOARD) return kConnectorOnboard;
  if (location == ZYMDB_LOCATION_SLOT) return kConnectorPciExpress;
  return 0;
}

// A package that is not recorded is told only for a place that was looked up, and for hardware type 0.
uint16_t package_at(const FunctionPlace& place) {
  if (place.location == kNotLookedUp || place.hardware_type != 0) return 0;
  return place.location != ZYMDB_LOCATION_BOARD ? kPackageModule : kPackageOnboard;
}

}  // namespace

int zymdb_get_pci_misc_info(int funkey, _ZYMDB_PCI_Misc* misc) {
  FunctionPlace place;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (misc == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIMisc", kMiscColumns, Filter<128>("PCIFuncKey=%d", funkey));
  if (!query.has_result()) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;

  query.read_columns(kMiscColumns, misc);
  if (misc->ConnectorType == 0 &&
      look_up_place(handle, static_cast<unsigned>(funkey), place) == ZYM_DB_STATUS_OK)
    misc->ConnectorType = connector_at(place.location);
  copy_text(misc->ConnectorTypeName, connector_type_name(misc->ConnectorType));

  if (misc->PackageType == 0) misc->PackageType = package_at(place);
  copy_text(misc->PackageTypeName, text_of(kPackageTypes, misc->PackageType));
  return ZYM_DB_STATUS_OK;
}
