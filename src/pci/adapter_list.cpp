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

// A row in which any of these cannot be read is left out.
constexpr auto kAdapterColumns = columns_of<Record>({
    ZYMDB_REQUIRED(Record, PCIKey),
    ZYMDB_REQUIRED(Record, NodeNo),
    ZYMDB_REQUIRED(Record, SlotNo),
    ZYMDB_REQUIRED(Record, HealthStatus),
    ZYMDB_OWN_COLUMN("ConnectorType"),
    ZYMDB_REQUIRED(Record, CardName),
    ZYMDB_REQUIRED(Record, AIMSupported),
    ZYMDB_REQUIRED(Record, Location),
    ZYMDB_OWN_COLUMN("PCIFuncKey"),
    ZYMDB_OWN_COLUMN("count(*)"),
});

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
  constexpr int kConnectorType = kAdapterColumns.place_of("ConnectorType");
  int is_null = 0;
  if (query.read_is_null(kConnectorType, is_null) != ZYM_DB_STATUS_OK) return false;
  unsigned long code = 0;
  if (is_null == 0 && query.read_number_in_text(kConnectorType, code) != ZYM_DB_STATUS_OK) return false;
  connector = static_cast<uint16_t>(code);
  return true;
}

// A drive carrier is not an adapter.
bool is_drive_carrier(const Record& adapter) {
  return std::strstr(adapter.CardName, "Hot Swap SSD") != nullptr;
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

// Reads the columns of the current row in their order, with stops where one decides about the row.
class RowReader {
 public:
  RowReader(Query& query, Record& adapter) : query_(query), adapter_(adapter) {}

  // Reads on, past a column; false when one of them cannot be read.
  bool read_past(int column) {
    const int first = next_;
    next_ = column + 1;
    return query_.read_columns(Columns(kAdapterColumns).part(first, next_), &adapter_, first);
  }

 private:
  Query& query_;
  Record& adapter_;
  int next_ = 0;
};

// What the row says about the adapter's functions.
struct Functions {
  uint32_t key = 0;
  uint32_t count = 0;

  bool read(Query& query) {
    constexpr int kPCIFuncKey = kAdapterColumns.place_of("PCIFuncKey");
    constexpr int kFunctionCount = kAdapterColumns.place_of("count(*)");
    return query.read(kPCIFuncKey, key) == ZYM_DB_STATUS_OK &&
           query.read(kFunctionCount, count) == ZYM_DB_STATUS_OK;
  }
};

// Fills one record from the current row; false leaves the row out.
bool read_adapter(_zym_db_handle_t* handle, Query& query, const PackageIds& packages, Record& adapter) {
  RowReader row(query, adapter);
  if (!row.read_past(kAdapterColumns.place_of("PCIKey")) || adapter.PCIKey == 0) return false;
  if (!row.read_past(kAdapterColumns.place_of("HealthStatus"))) return false;
  if (!read_connector(query, adapter.ConnectorType)) return false;
  if (!row.read_past(kAdapterColumns.place_of("CardName")) || is_drive_carrier(adapter)) return false;
  if (!row.read_past(kAdapterColumns.place_of("AIMSupported"))) return false;
  if (adapter.AIMSupported == ZYMDB_AIM_MERGED && has_managed_function(handle, adapter.PCIKey))
    adapter.AIMSupported = ZYMDB_AIM_MANAGED;
  if (!row.read_past(kAdapterColumns.place_of("Location"))) return false;
  packages.fill(adapter);

  Functions functions;
  if (!functions.read(query)) return false;
  if (is_combined_card(adapter, functions.count, functions.key))
    copy_text(adapter.CardName, kCombinedCardName);
  name_connector(handle, functions.key, adapter);
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
