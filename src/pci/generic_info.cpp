#include "db/query.h"
#include "db/rows.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_Generic;

constexpr auto kGenericColumns = columns_of<Record>({
    ZYMDB_FIELD(Record, _id),
    ZYMDB_FIELD(Record, BridgeId),
    ZYMDB_FIELD(Record, SegNo),
    ZYMDB_FIELD(Record, BusNo),
    ZYMDB_FIELD(Record, DeviceNo),
    ZYMDB_FIELD(Record, FunctionNo),
    ZYMDB_FIELD(Record, VendorId),
    ZYMDB_FIELD(Record, DeviceId),
    ZYMDB_FIELD(Record, RevId),
    ZYMDB_FIELD(Record, ClsCode),
    ZYMDB_FIELD(Record, SubVendorId),
    ZYMDB_FIELD(Record, SubDeviceId),
    ZYMDB_FIELD(Record, SlotNo),
    ZYMDB_FIELD(Record, Location),
    ZYMDB_FIELD(Record, SlotDesignation),
    ZYMDB_FIELD(Record, SlotType),
    ZYMDB_FIELD(Record, SlotDataBusWidth),
    ZYMDB_FIELD(Record, Hotplug),
    ZYMDB_FIELD(Record, PCIType),
    ZYMDB_FIELD(Record, BladeSlotPort),
    ZYMDB_FIELD(Record, NodeIndex),
    ZYMDB_FIELD(Record, FunType),
    // What a link without data is taken for: generation 3 on 4 lanes, able to do generation 4 on 16.
    ZYMDB_COLUMN("LanesInUse", Record, LanesInUse, 4),
    ZYMDB_COLUMN("MaxLanes", Record, MaxLanes, 16),
    ZYMDB_COLUMN("MaxPCIeType", Record, MaxPCIeType, 4),
    ZYMDB_COLUMN("PCIeType", Record, PCIeType, 3),
});

// The list has always cut the designation one character earlier than the single record.
constexpr auto kGenericListColumns = with_text_size(kGenericColumns, "SlotDesignation", 64);

}  // namespace

int zymdb_get_pci_generic_info(unsigned int funkey, _ZYMDB_PCI_Generic* info) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (info == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIs", kGenericColumns, "FunKey=?", parameter(funkey));
  if (query.step() == ZYM_DB_STATUS_ROW) query.read_columns(kGenericColumns, info);
  return query.status();
}

int zymdb_get_pci_generic_info_list(_ZYMDB_PCI_Generic_List* list, const char* filter) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIs", kGenericListColumns, filter);
  if (query.status() != ZYM_DB_STATUS_OK) return fail_list(list, query.status());
  if (!query.has_result()) return ZYM_DB_STATUS_OK;
  const unsigned room = query.row_count();
  if (room == 0) {
    list->count = 0;
    return ZYM_DB_STATUS_OK;
  }
  CallerArray<Record> items = allocate_array<Record>(room);
  if (items == nullptr) return fail_list(list, ZYM_DB_STATUS_NO_MEMORY);

  // Whatever ends the rows, what was read is the list.
  uint32_t filled = 0;
  read_rows(query, items.get(), room, filled, [&](Record& item) {
    query.read_columns(kGenericListColumns, &item);
    return true;
  });
  list->count = filled;
  list->items = items.release();
  return ZYM_DB_STATUS_OK;
}
