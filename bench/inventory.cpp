#include "inventory.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "db/database_client.h"

extern "C" int zym_db_begin(_zym_db_handle_t* handle);
extern "C" int zym_db_commit(_zym_db_handle_t* handle);

namespace bench {
namespace {

void insert(_zym_db_handle_t* handle, const char* table, zym_db_content_values_t* values) {
  int64_t id = 0;
  if (zym_db_insert(handle, table, values, 0, &id) != ZYM_DB_STATUS_OK)
    throw std::runtime_error(std::string("cannot fill ") + table);
  zym_db_content_clear(values);
}

void put_function(_zym_db_handle_t* handle, zym_db_content_values_t* values, int adapter, int function) {
  const uint32_t funkey = Inventory::function_key(adapter, function);
  const uint32_t key = 1u << 16 | static_cast<uint32_t>(adapter);
  const std::pair<const char*, uint32_t> columns[] = {{"FunKey", funkey},
                                                      {"DevKey", key},
                                                      {"BridgeId", 1},
                                                      {"SegNo", 0},
                                                      {"BusNo", adapter},
                                                      {"DeviceNo", 0},
                                                      {"FunctionNo", function},
                                                      {"VendorId", 0x15B3},
                                                      {"DeviceId", 0x1017},
                                                      {"ClsCode", 0x020000},
                                                      {"RevId", 0},
                                                      {"SubVendorId", 0x15B3},
                                                      {"SubDeviceId", 8},
                                                      {"SlotNo", adapter},
                                                      {"Location", 1},
                                                      {"SlotType", 0xB6},
                                                      {"SlotDataBusWidth", 13},
                                                      {"Hotplug", 0},
                                                      {"PCIType", 2},
                                                      {"BladeSlotPort", 0},
                                                      {"NodeIndex", 0},
                                                      {"FunType", 2},
                                                      {"LanesInUse", 8},
                                                      {"MaxLanes", 16},
                                                      {"MaxPCIeType", 3},
                                                      {"PCIeType", 3},
                                                      {"HardwareId", funkey},
                                                      {"HardwareTypeId", 3}};
  for (const auto& [column, value] : columns) zym_db_content_put_uint(values, column, value);
  zym_db_content_put_text(values, "SlotDesignation", "PCIe Slot");
  insert(handle, "PCIs", values);

  const std::pair<const char*, uint32_t> adapter_columns[] = {
      {"PCIKey", key},     {"PCIFuncKey", funkey}, {"NodeNo", 0},           {"SlotNo", adapter},
      {"HealthStatus", 1}, {"AIMSupported", 0},    {"Location", 1},         {"SegNo", 0},
      {"BusNo", adapter},  {"DeviceNo", 0},        {"FunctionNo", function}};
  for (const auto& [column, value] : adapter_columns) zym_db_content_put_uint(values, column, value);
  zym_db_content_put_text(values, "CardName", "a dual-port network adapter with a name of usual length");
  zym_db_content_put_text(values, "ConnectorType", "0xB6");
  insert(handle, "PCIAdapter", values);
}

}  // namespace

Inventory::Inventory(int adapters) {
  std::string name = (std::filesystem::temp_directory_path() / "zymdb-bench-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  setenv("ZYMDB_INVENTORY", path().c_str(), 1);
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) throw std::runtime_error("no inventory in " + name);

  zym_db_content_values_t* const values = zym_db_get_content_values(handle);
  zym_db_begin(handle);
  for (int adapter = 0; adapter < adapters; ++adapter)
    for (int function = 0; function < kFunctionsPerAdapter; ++function)
      put_function(handle, values, adapter, function);
  if (zym_db_commit(handle) != ZYM_DB_STATUS_OK) throw std::runtime_error("cannot fill the inventory");
  zym_db_free_content_values(values);
}

Inventory::~Inventory() {
  zym_db_close(get_dmdb_handle());
  std::filesystem::remove_all(folder_);
}

std::string Inventory::contents() const {
  std::string all;
  for (const char* name : {"inventory.db", "inventory.db-wal"}) {
    std::ifstream file(folder_ / name, std::ios::binary);
    all.append(std::istreambuf_iterator<char>(file), {});
    all += '\n';
  }
  return all;
}

void Inventory::mark() {
  marked_ = contents();
}
bool Inventory::is_written_since_mark() const {
  return contents() != marked_;
}

}  // namespace bench
