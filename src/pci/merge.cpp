#include <cstring>

#include "controller/ruvo_log.h"
#include "db/column.h"
#include "db/query.h"
#include "db/values.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

// AIMSupported of a row, in the widths that it is written in.
constexpr uint8_t kNotManaged = ZYMDB_AIM_NONE;
constexpr uint32_t kMerged = ZYMDB_AIM_MERGED;

// A function with settings, as PCIs tells it.
struct Function {
  uint32_t NodeIndex;
  uint32_t SlotNo;
  uint32_t SegNo;
  uint32_t BusNo;
  uint32_t DeviceNo;
  uint32_t FunctionNo;
  uint32_t Location;
  uint32_t DevKey;
  uint32_t FunKey;
};
constexpr Column kFunctionColumns[] = {
    ZYMDB_FIELD(Function, NodeIndex), ZYMDB_FIELD(Function, SlotNo),   ZYMDB_FIELD(Function, SegNo),
    ZYMDB_FIELD(Function, BusNo),     ZYMDB_FIELD(Function, DeviceNo), ZYMDB_FIELD(Function, FunctionNo),
    ZYMDB_FIELD(Function, Location),  ZYMDB_FIELD(Function, DevKey),   ZYMDB_FIELD(Function, FunKey),
};

// What a merged row takes over from its adapter.
struct Adapter {
  char CardName[129];
  char ConnectorType[8];
};
constexpr Column kAdapterColumns[] = {ZYMDB_FIELD(Adapter, CardName), ZYMDB_FIELD(Adapter, ConnectorType)};

// Merged rows whose settings have disappeared: back to an unmanaged row while the function is there, gone
// with it. Neither statement's failure keeps the merge from going on.
void retire_merged_rows(_zym_db_handle_t* handle, Values& values) {
  values.clear();
  values.put("AIMSupported", kNotManaged);
  values.update(
      "PCIAdapter",
      Filter<128>("AIMSupported=%u AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting) AND PCIFuncKey "
                  "IN (SELECT FunKey FROM PCIs)",
                  kMerged));
  int64_t count = 0;
  zym_db_delete(
      handle, "PCIAdapter",
      Filter<128>("AIMSupported=%u AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting)", kMerged), nullptr,
      0, &count);
}

// Reads the one row of a query into `record`. A failure is logged with the key that was looked for, under
// `what` and where; it is answered as false, with the status that ends the merge.
bool read_one(Query& query, std::span<const Column> columns, void* record, const char* what,
              const char* table, uint32_t key, int& status) {
  status = query.status();
  if (!query.has_result()) {
    ruvo_log::logErr("Merge: Can not find %s %d in %s table, rc = %d\n", what, static_cast<int>(key), table,
                     status);
    return false;
  }
  status = query.step();
  if (status != ZYM_DB_STATUS_ROW) {
    query.release();
    ruvo_log::logErr("Merge: Can not step query result for %s %d, rc = %d\n", what, static_cast<int>(key),
                     status);
    return false;
  }
  query.read_columns(columns, record);
  return true;
}

bool read_function(_zym_db_handle_t* handle, uint32_t funkey, Function& function, int& status) {
  Query query(handle, "PCIs", kFunctionColumns, Filter<128>("FunKey=%d", static_cast<int>(funkey)));
  return read_one(query, kFunctionColumns, &function, "funkey", "PCIs", funkey, status);
}

bool read_adapter(_zym_db_handle_t* handle, const Function& function, Adapter& adapter, int& status) {
  Query query(handle, "PCIAdapter", kAdapterColumns,
              Filter<128>("PCIKey=%d", static_cast<int>(function.DevKey)));
  if (!read_one(query, kAdapterColumns, &adapter, "pcikey", "PCIAdapter", function.DevKey, status))
    return false;
  // A generic name is made the function's own by its address.
  if (std::strncmp(adapter.CardName, "Adapter", 7) == 0)
    std::snprintf(adapter.CardName, sizeof adapter.CardName, "Adapter %02X:%02X:%02X", function.BusNo,
                  function.DeviceNo, function.FunctionNo);
  return true;
}

void put_row(Values& values, const Function& function, const Adapter& adapter) {
  values.clear();
  values.put("SegNo", function.SegNo);
  values.put("BusNo", function.BusNo);
  values.put("DeviceNo", function.DeviceNo);
  values.put("FunctionNo", function.FunctionNo);
  values.put("NodeNo", function.NodeIndex);
  values.put("SlotNo", function.SlotNo);
  values.put("CardName", adapter.CardName);
  values.put("ConnectorType", adapter.ConnectorType);
  values.put("AIMSupported", kMerged);
  values.put("PCIKey", function.DevKey);
  values.put("PCIFuncKey", function.FunKey);
  values.put("Location", function.Location);
}

// Merges one function with settings; false ends the merge with `status`.
bool merge_function(_zym_db_handle_t* handle, Values& values, uint32_t funkey, int& status) {
  const int key = static_cast<int>(funkey);
  unsigned int oob_type = 0;
  const bool is_recorded = zymdb_get_pci_function_oob_type(funkey, &oob_type) == ZYM_DB_STATUS_OK;
  if (is_recorded && oob_type != kNotManaged) return true;
  if (is_recorded)
    ruvo_log::logInfo("Merge: funkey %d in UCM already recorded in PCIAdapter, will update oobType\n", key);
  else
    ruvo_log::logInfo("Merge: funkey %d in UCM is not recorded in PCIAdapter.\n", key);

  Function function{};
  Adapter adapter{};
  if (!read_function(handle, funkey, function, status) || !read_adapter(handle, function, adapter, status))
    return false;

  put_row(values, function, adapter);
  status = is_recorded ? values.update("PCIAdapter", Filter<32>("PCIFuncKey=%u", funkey))
                       : values.insert("PCIAdapter");
  if (status != ZYM_DB_STATUS_OK) {
    ruvo_log::logWarn("Merge: failed to insert/update funkey %d to PCIAdapter, rc=%d\n", key, status);
    return false;
  }
  ruvo_log::logInfo("Merge: insert/update funkey %d to PCIAdapter successfully\n", key);
  return true;
}

}  // namespace

int zymdb_merge_aim_ucm_pfa(void) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  retire_merged_rows(handle, values);

  Query settings(handle, "PCISetting", {"PfaKey"}, Filter<128>("1 GROUP BY PfaKey"));
  if (!settings.has_result()) {
    settings.release();
    ruvo_log::logErr("Merge: Can not query all function key from PCISettings, rc = %d\n", settings.status());
    return settings.status();
  }

  const unsigned count = settings.row_count();
  int status;
  for (unsigned handled = 0; (status = settings.step()) == ZYM_DB_STATUS_ROW && handled < count; ++handled)
    if (!merge_function(handle, values, settings.read_or(0, uint32_t{0}), status)) break;
  // A step that found a row or none is no failure.
  return status == ZYM_DB_STATUS_ROW || status == ZYM_DB_STATUS_DONE ? ZYM_DB_STATUS_OK : status;
}
