#include <cstdlib>

#include "db/filter.h"
#include "db/known_devices.h"
#include "db/query.h"
#include "db/rows.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

constexpr unsigned kUnknownFunctionType = 23;

// Lists column 0 of the rows; keys that cannot be read are left out.
int list_function_keys(Query& query, _ZYMDB_PCI_FunKey_List* list) {
  return list_rows(query, allocate_array<uint32_t>, list->count, list->keys,
                   [&](uint32_t& key) { return query.read(0, key) == ZYM_DB_STATUS_OK; });
}

// Makes room for one key more than the `count` that stand in the array.
bool grow(CallerArray<uint32_t>& keys, uint32_t count) {
  void* const larger = std::realloc(keys.get(), (size_t{count} + 1) * sizeof(uint32_t));
  if (larger == nullptr) return false;
  keys.release();
  keys.reset(static_cast<uint32_t*>(larger));
  return true;
}

// The adapter table itself lists the functions of an adapter that is managed out of band.
bool is_listed_by_adapter(uint8_t oob_type) {
  return oob_type >= 1 && oob_type <= 3;
}

// Reads column 0 of the one row of a function with `read`; without a row answers the step's code.
template <class Read>
int look_up_function(Query& query, Read read) {
  if (!query.has_result()) return query.status();
  const int status = query.step();
  return status == ZYM_DB_STATUS_ROW ? read() : status;
}

}  // namespace

int zymdb_get_pci_keys(_ZYMDB_PCI_Key_List* list, const char* filter) {
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;

  list->count = 0;
  Query query(handle, filter != nullptr
                          ? Statement<160>("select DevKey from PCIs where %s group by DevKey;", filter)
                          : Statement<160>("select DevKey from PCIs group by DevKey;"));
  if (!query.has_result()) return query.status();
  const unsigned room = query.row_count();
  if (room == 0) return ZYM_DB_STATUS_OK;
  CallerArray<uint32_t> keys = allocate_array<uint32_t>(room);
  // Callers of this operation look at the count alone: a lack of memory is an empty list.
  if (keys == nullptr) return ZYM_DB_STATUS_OK;

  // Every row counts, the first count of them notwithstanding; an unreadable key is listed as 0.
  while (query.step() == ZYM_DB_STATUS_ROW) {
    if (list->count >= room && !grow(keys, list->count)) break;
    keys[list->count++] = query.read_or(0, uint32_t{0});
  }
  list->keys = keys.release();
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_dpu_keys(_ZYMDB_PCI_Key_List* list) {
  return zymdb_get_pci_keys(list, Filter<64>("VendorId=%u and DeviceId=%u", ZYMDB_VENDOR_DPU, kDpuDevice));
}

int zymdb_get_pci_funkey_list_by_filter(char* filter, _ZYMDB_PCI_FunKey_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  // A missing filter counts as a missing database.
  if (handle == nullptr || filter == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  Query query(handle, "PCIs", {"FunKey"}, filter);
  return list_function_keys(query, list);
}

int zymdb_get_pci_funkey_list_by_slot(int location, int slot, _ZYMDB_PCI_FunKey_List* list) {
  Filter<48> filter("Location=%d AND SlotNo=%d", location, slot);
  return zymdb_get_pci_funkey_list_by_filter(filter.data(), list);
}

int zymdb_get_pci_funkey_list(int pci_key, _ZYMDB_PCI_FunKey_List* list) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (list == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *list = {};
  Query adapter(handle, "PCIAdapter", {"DISTINCT PCIFuncKey", "AIMSupported"},
                Filter<128>("PCIKey=%d", pci_key));
  if (!adapter.has_result()) return adapter.status();
  if (const int status = adapter.step(); status != ZYM_DB_STATUS_ROW) return status;

  int32_t first_key = 0;
  uint8_t oob_type = 0;
  const int read_status = adapter.read(0, first_key) | adapter.read(1, oob_type);
  if (read_status != ZYM_DB_STATUS_OK) return read_status;

  if (is_listed_by_adapter(oob_type)) {
    const int status = adapter.reset();
    return status == ZYM_DB_STATUS_OK ? list_function_keys(adapter, list) : status;
  }
  adapter.release();
  Query function(handle, "PCIs", {"FunKey"}, Filter<128>("DevKey=%d and FunKey=%d", pci_key, first_key));
  return list_function_keys(function, list);
}

int zymdb_get_pci_function_type(unsigned int funkey, unsigned int* type) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (type == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *type = kUnknownFunctionType;
  Query query(handle, "PCIs", {"FunType"}, "FunKey=?", parameter(funkey));
  return look_up_function(query, [&] { return query.read(0, *type); });
}

int zymdb_get_pci_function_oob_type(unsigned int funkey, unsigned int* oob_type) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (oob_type == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *oob_type = 0;
  Query query(handle, "PCIAdapter", {"AIMSupported"}, "PCIFuncKey=?", parameter(funkey));
  return look_up_function(query, [&] { return query.read(0, *oob_type); });
}

int zymdb_get_pci_cardname_by_funkey(unsigned int funkey, char* name, int size) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (name == nullptr || size <= 0) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIAdapter", {"CardName"}, "PCIFuncKey=?", parameter(funkey));
  return look_up_function(query, [&] {
    name[0] = '\0';
    return query.read_text(0, name, size);
  });
}

int zymdb_get_pci_hardwareidtype_by_funkey(unsigned int funkey, unsigned int* hardware_id,
                                           unsigned char* hardware_type) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (hardware_id == nullptr || hardware_type == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIs", {"HardwareId", "HardwareTypeId"},
              Filter<128>("FunKey=%d", static_cast<int>(funkey)));
  if (query.status() != ZYM_DB_STATUS_OK) return query.status();
  if (const int status = query.step(); status != ZYM_DB_STATUS_ROW) return status;
  *hardware_id = query.read_or(0, uint32_t{0});
  *hardware_type = static_cast<unsigned char>(query.read_or(1, uint32_t{0}));
  return ZYM_DB_STATUS_OK;
}

int zymdb_get_pci_id_by_funkey(int funkey, unsigned short* vendor, unsigned short* device,
                               unsigned short* subvendor, unsigned short* subdevice) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (vendor == nullptr || device == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  if (subvendor == nullptr || subdevice == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(handle, "PCIs", {"VendorId", "DeviceId", "SubVendorId", "SubDeviceId"},
              Filter<128>("FunKey=%d", funkey));
  if (query.step() == ZYM_DB_STATUS_ROW) {
    query.read(0, *vendor);
    query.read(1, *device);
    query.read(2, *subvendor);
    query.read(3, *subdevice);
  }
  return query.status();
}
