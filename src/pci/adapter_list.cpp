#include <cstring>
#include <span>

#include "db/code_text.h"
#include "db/query.h"
#include "db/rows.h"
#include "pci/connector_type.h"
#include "pci/function_lookup.h"
#include "pci/slot_type.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_Adapter;

// Every column is read by the operation itself: any that cannot be read leaves the row out.
constexpr Column kAdapterColumns[] = {
    ZYMDB_OWN_COLUMN("PCIKey"),       ZYMDB_OWN_COLUMN("NodeNo"),        ZYMDB_OWN_COLUMN("SlotNo"),
    ZYMDB_OWN_COLUMN("HealthStatus"), ZYMDB_OWN_COLUMN("ConnectorType"), ZYMDB_OWN_COLUMN("CardName"),
    ZYMDB_OWN_COLUMN("AIMSupported"), ZYMDB_OWN_COLUMN("Location"),      ZYMDB_OWN_COLUMN("PCIFuncKey"),
    ZYMDB_OWN_COLUMN("count(*)"),
};
enum AdapterColumn {
  kPCIKey,
  kNodeNo,
  kSlotNo,
  kHealthStatus,
  kConnectorType,
  kCardName,
  kAIMSupported,
  kLocation,
  kPCIFuncKey,
  kFunctionCount,
};

// The card that carries two different controller chips, by what one of its functions tells.
constexpr unsigned kCombinedCardFunctions = 4;
constexpr char kCombinedCardName[] =
    "Broadcom 57416 10GBASE-T 2-port + 5720 1GbE 2-port OCP Ethernet Adapter";
constexpr struct {
  uint16_t device;
  uint16_t subdevice;
} kCombinedCardChips[] = {{0x165F, 0x4106}, {0x16D8, 0x4163}};

// The slots' package identifiers; none when they cannot be had.
class PackageIds {
 public:
  PackageIds() : is_known_(zymdb_get_ncsi_id_list(&list_) == ZYM_DB_STATUS_OK) {}
  ~PackageIds() {
    if (is_known_) std::free(list_.entries);
  }
  PackageIds(const PackageIds&) = delete;
  PackageIds& operator=(const PackageIds&) = delete;

  void fill(Record& adapter) const {
    adapter.NcsiIdValid = 0;
    adapter.PackageID1 = adapter.PackageID2 = 0xFF;
    if (!is_known_) return;
    for (const _ZYMDB_NCSIPackageID& entry : std::span(list_.entries, list_.count)) {
      if (entry.Location != adapter.Location || entry.SlotNo != adapter.SlotNo) continue;
      adapter.NcsiIdValid = 1;
      adapter.PackageID1 = entry.PackageID1;
      adapter.PackageID2 = entry.PackageID2;
      return;
    }
  }

 private:
  _ZYMDB_NCSIPackageID_List list_{};
  bool is_known_;
};

// An adapter without a recorded connector has code 0.
bool read_connector(Query& query, uint16_t& connector) {
  int is_null = 0;
  if (query.read_is_null(kConnectorType, is_null) != ZYM_DB_STATUS_OK) return false;
  unsigned long code = 0;
  if (is_null == 0 && query.read_number_in_text(kConnectorType, code) != ZYM_DB_STATUS_OK) return false;
  connector = static_cast<uint16_t>(code);
  return true;
}

// A drive carrier is not an adapter.
bool read_card_name(Query& query, char (&name)[129]) {
  return query.read_text(kCardName, name, sizeof name) == ZYM_DB_STATUS_OK &&
         std::strstr(name, "Hot Swap SSD") == nullptr;
}

// Whether a collector has written any function of the adapter as managed out of band.
bool has_managed_function(_zym_db_handle_t* handle, uint32_t pci_key) {
  Query query(handle, "PCIAdapter", kAdapterColumns,
              Filter<64>("PCIKey=%d AND AIMSupported=%d", static_cast<int>(pci_key), ZYMDB_AIM_MANAGED));
  return query.row_count() != 0;
}

bool is_combined_card(const Record& adapter, unsigned functions, uint32_t funkey) {
  if (std::strncmp(adapter.CardName, "Broadcom 57", 11) != 0 ||
      std::strstr(adapter.CardName, "OCP") == nullptr || functions != kCombinedCardFunctions)
    return false;
  _ZYMDB_PCI_Generic function{};
  if (zymdb_get_pci_generic_info(funkey, &function) != ZYM_DB_STATUS_OK) return false;
  for (const auto& chip : kCombinedCardChips)
    if (function.DeviceId == chip.device && function.SubDeviceId == chip.subdevice) return true;
  return false;
}

// A managed adapter that reports no connector of its own has the one of its place.
uint16_t connector_of_place(_zym_db_handle_t* handle, uint32_t funkey) {
  FunctionPlace place;
  if (look_up_place(handle, funkey, place) != ZYM_DB_STATUS_OK) return 0;
  if (place.location == ZYMDB_LOCATION_BOARD) return kConnectorOnboard;
  if (place.location == ZYMDB_LOCATION_SLOT) return kConnectorPciExpress;
  return 0;
}

// Managed adapters report a connector type; of all others only the slot's type is known.
void name_connector(_zym_db_handle_t* handle, uint32_t funkey, Record& adapter) {
  if (adapter.AIMSupported == ZYMDB_AIM_MANAGED) {
    if (adapter.ConnectorType == 0) adapter.ConnectorType = connector_of_place(handle, funkey);
    copy_text(adapter.ConnectorTypeName, connector_type_name(adapter.ConnectorType));
  } else if (adapter.Location == ZYMDB_LOCATION_BOARD) {
    adapter.ConnectorType = kConnectorOnboard;
    copy_text(adapter.ConnectorTypeName, connector_type_name(adapter.ConnectorType));
  } else {
    copy_text(adapter.ConnectorTypeName, slot_type_name(adapter.ConnectorType));
  }
}

// Fills one record from the current row; false leaves the row out.
bool read_adapter(_zym_db_handle_t* handle, Query& query, const PackageIds& packages, Record& adapter) {
  const auto is_read = [&](AdapterColumn column, auto& value) {
    return query.read(column, value) == ZYM_DB_STATUS_OK;
  };
  if (!is_read(kPCIKey, adapter.PCIKey) || adapter.PCIKey == 0) return false;
  if (!is_read(kNodeNo, adapter.NodeNo) || !is_read(kSlotNo, adapter.SlotNo) ||
      !is_read(kHealthStatus, adapter.HealthStatus) || !read_connector(query, adapter.ConnectorType) ||
      !read_card_name(query, adapter.CardName) || !is_read(kAIMSupported, adapter.AIMSupported))
    return false;
  if (adapter.AIMSupported == ZYMDB_AIM_MERGED && has_managed_function(handle, adapter.PCIKey))
    adapter.AIMSupported = ZYMDB_AIM_MANAGED;
  if (!is_read(kLocation, adapter.Location)) return false;
  packages.fill(adapter);

  uint32_t funkey = 0;
  uint32_t functions = 0;
  if (!is_read(kPCIFuncKey, funkey) || !is_read(kFunctionCount, functions)) return false;
  if (is_combined_card(adapter, functions, funkey)) copy_text(adapter.CardName, kCombinedCardName);
  name_connector(handle, funkey, adapter);
  return true;
}

}  // namespace

int zymdb_get_pci_adapter_list(_ZYMDB_PCI_Adapter_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  Query query(handle, "PCIAdapter", kAdapterColumns, Filter<128>("1 GROUP BY PCIKey"));
  if (!query.has_result()) return query.status();
  const unsigned room = query.row_count();
  CallerArray<Record> adapters = allocate_zeroed_array<Record>(room);
  if (adapters == nullptr) return ZYM_DB_STATUS_NO_MEMORY;

  const PackageIds packages;
  uint32_t filled = 0;
  const int status = read_rows(query, adapters.get(), room, filled, [&](Record& adapter) {
    return read_adapter(handle, query, packages, adapter);
  });
  if (!ended_well(status)) return status;
  list->count = filled;
  list->adapters = adapters.release();
  return ZYM_DB_STATUS_OK;
}
