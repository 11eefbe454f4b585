#include "operations.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>

#include "checks.h"
#include "controller/database_client.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_platform.h"
#include "zymdb_storage.h"

namespace zymdb::fuzz {
namespace {

using Kind = Operation::Kind;

// The statuses of zymdb_db.h that operations answer, and those of the client's own.
void require_status(int status) {
  constexpr int kStatuses[] = {0, 1, 3, 4, 6, 9, 10, 11, 30, 31, 32, 33, 40, 41, 42, 43, 44, 45, 46, 47, 48};
  require(std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses),
          "answers no known status", std::to_string(status));
}

void require_id(int64_t id) {
  require(id >= -1, "answers no id", std::to_string(id));
}

// ---- Records ------------------------------------------------------------------------------------------

void require_texts(const _ZYMDB_Processor& r) {
  require_ended(r.Socket, r.Manufacturer, r.Version, r.SerialNo, r.AssetTag, r.PartNo);
}
void require_texts(const _ZYMDB_Memory& r) {
  require_ended(r.DevLocator, r.BankLocator, r.Manufacturer, r.SerialNo, r.AssetTag, r.PartNo,
                r.FirmwareVersion, r.SoftwareID);
}
void require_texts(const _ZYMDB_PCI_Generic& r) {
  require_ended(r.SlotDesignation);
}
void require_texts(const _ZYMDB_PCI_Misc& r) {
  require_ended(r.ConnectorTypeName, r.PackageTypeName, r.OtherPackageType, r.AIMSpecVersion);
}
void require_texts(const _ZYMDB_PCI_VPD& r) {
  require_ended(r.UUID, r.ProductName, r.Manufacture, r.SerialNo, r.PartNo, r.Model, r.FRUNo);
}
void require_texts(const _ZYMDB_PCI_Adapter& r) {
  require_ended(r.ConnectorTypeName, r.CardName);
}
void require_texts(const _ZYMDB_GPU_Device& r) {
  require_ended(r.VideoMemoryTypeName, r.VideoMemorySize);
}
void require_texts(const _ZYMDB_GPU_Chip& r) {
  require_ended(r.GPUChipName, r.GPUChipManufacturer, r.GPUChipModel, r.GPUChipPartNumber, r.GPUChipSKU,
                r.GPUChipSerialNumber, r.GPUChipFamily, r.GPUChipUniqueID, r.GPUChipFormFactorName);
}
void require_texts(const _ZYMDB_PCI_LogicalPort& r) {
  require_ended(r.PermanentAddress, r.NetworkAddresses, r.FCoEPermanentAddress, r.FCoENetworkAddressess,
                r.LinkTechnologyName, r.vNICModeName, r.ProtocolTypeName, r.ConnectionTypeName, r.RoleName);
}
void require_texts(const _ZYMDB_PCI_PhysicalPort& r) {
  require_ended(r.PermanentAddress, r.ConnectorLayoutName);
}
void require_texts(const _ZYMDB_PCI_Firmware& r) {
  require_ended(r.FirmwareName, r.VersionString, r.Description, r.ReleaseDate, r.ClassificationString,
                r.Manufacture, r.SoftwareID);
}
void require_texts(const _ZYMDB_PLDM_Firmware& r) {
  require_ended(r.DeviceName, r.Manufacture, r.SoftwareID, r.VersionString, r.PendingVersionString,
                r.PkgVersionString, r.ReleaseDate, r.PendingReleaseDate, r.UpdateErrString);
}
void require_texts(const _ZYMDB_Embedded_Firmware& r) {
  require_ended(r.DeviceName, r.SoftwareID);
}
void require_texts(const _ZYMDB_DPU_Event& r) {
  require_ended(r.GenID, r.Message);
}
void require_texts(const ZYMDB_PCI_Config_Setting& r) {
  require_ended(r.SettingID, r.SettingName, r.CurrentValue, r.PendingValue, r.SuppressIf, r.GrayIf, r.GroupID,
                r.GroupName, r.GroupSuppressIf, r.GroupGrayIf, r.Mriname, r.ShortDesc, r.FullDesc, r.Defvalue,
                r.Mfg_default, r.Defaultaction, r.RecordId, r.Pattern, r.Choices);
}
void require_texts(const _ZYMDB_AimDisk& r) {
  require_ended(r.Location, r.DisplayType, r.MediaType, r.FruNo, r.PartNo, r.SerialNo, r.Model, r.UUID,
                r.Manufacture, r.FwVersion, r.Capacity);
}
void require_texts(uint32_t) {}

// A list that an operation handed out, however it ended.
template <class Record>
void take(Record* records, uint32_t count) {
  require(records != nullptr || count == 0, "a list of nothing");
  for (uint32_t i = 0; i < count; ++i) require_texts(records[i]);
  std::free(records);
}

template <size_t Size>
void put(char (&field)[Size], const std::string& text) {
  field[text.copy(field, Size - 1)] = '\0';
}

// A text that fills its field has no NUL.
template <size_t Size>
void put_whole(char (&field)[Size], const std::string& text) {
  const size_t length = text.copy(field, Size);
  std::fill(field + length, field + Size, '\0');
}

// The texts in turn, over again when there are fewer than fields.
const std::string& in_turn(const Texts& texts, size_t place) {
  return texts[texts.size() > 0 ? place % texts.size() : 0];
}
template <size_t... Sizes>
void fill(const Texts& texts, char (&... fields)[Sizes]) {
  size_t place = 0;
  (put(fields, in_turn(texts, place++)), ...);
}
template <size_t... Sizes>
void fill_whole(const Texts& texts, char (&... fields)[Sizes]) {
  size_t place = 0;
  (put_whole(fields, in_turn(texts, place++)), ...);
}

_ZYMDB_Memory memory_of(const Texts& texts) {
  _ZYMDB_Memory r{};
  r._id = 1;
  fill(texts, r.DevLocator, r.BankLocator, r.Manufacturer, r.SerialNo, r.AssetTag, r.PartNo,
       r.FirmwareVersion, r.SoftwareID);
  return r;
}
_ZYMDB_PCI_Firmware firmware_of(const Texts& texts) {
  _ZYMDB_PCI_Firmware r{};
  r.Classification = 1;
  fill(texts, r.SoftwareID, r.FirmwareName, r.VersionString, r.Description, r.ReleaseDate, r.Manufacture,
       r.ClassificationString);
  return r;
}
_ZYMDB_PLDM_Firmware pldm_firmware_of(const Texts& texts) {
  _ZYMDB_PLDM_Firmware r{};
  r.DeviceType = r.PCIKey = r.PCIFuncKey = r.Location = r.SlotNo = r.UpdateSupport = 1;
  fill(texts, r.SoftwareID, r.DeviceName, r.Manufacture, r.VersionString, r.PendingVersionString,
       r.PkgVersionString, r.ReleaseDate, r.PendingReleaseDate, r.UpdateErrString);
  return r;
}
_ZYMDB_Embedded_Firmware embedded_firmware_of(const Texts& texts) {
  _ZYMDB_Embedded_Firmware r{};
  r.DeviceIndex = 1;
  fill(texts, r.SoftwareID, r.DeviceName);
  return r;
}
_ZYMDB_DPU_Event event_of(const Texts& texts) {
  _ZYMDB_DPU_Event r{};
  fill_whole(texts, r.GenID, r.Message);
  return r;
}
ZYMDB_PCI_Config_Setting setting_of(const Texts& texts) {
  ZYMDB_PCI_Config_Setting r{};
  r.PfaKey = 1;
  fill(texts, r.SettingID, r.SettingName, r.CurrentValue, r.PendingValue, r.SuppressIf, r.GrayIf, r.GroupID,
       r.GroupName, r.GroupSuppressIf, r.GroupGrayIf, r.Mriname, r.ShortDesc, r.FullDesc, r.Defvalue,
       r.Mfg_default, r.Defaultaction, r.RecordId, r.Pattern, r.Choices);
  return r;
}
_ZYMDB_AimDisk drive_of(const Texts& texts) {
  _ZYMDB_AimDisk r{};
  r.SlotNo = r.BayNo = 1;
  r.LocationId = 2;
  r.DriveTypeId = 3;
  fill(texts, r.SerialNo, r.FwVersion, r.Model, r.FruNo, r.PartNo, r.UUID, r.Manufacture, r.Capacity,
       r.Location, r.DisplayType, r.MediaType);
  return r;
}

// ---- Operations of one form ---------------------------------------------------------------------------

// list(out)
template <auto Run, class List, auto Records, auto Count>
void list_all(Texts&) {
  List list{};
  require_status(Run(&list));
  take(list.*Records, list.*Count);
}

// list(key, out)
template <auto Run, class List, auto Records, auto Count>
void list_of_first(Texts&) {
  List list{};
  require_status(Run(1, &list));
  take(list.*Records, list.*Count);
}

// list(out, filter)
template <auto Run, class List, auto Records, auto Count>
void list_filtered(Texts& texts) {
  List list{};
  require_status(Run(&list, texts.or_null(0)));
  take(list.*Records, list.*Count);
}

// read(key, out)
template <auto Run, class Record>
void read_first(Texts&) {
  Record record{};
  require_status(Run(1, &record));
  require_texts(record);
}

// read(out, key)
template <auto Run>
void read_memory(Texts&) {
  _ZYMDB_Memory record{};
  require_status(Run(&record, 1));
  require_texts(record);
}

// write(record)
template <auto Run, auto Make>
void write(Texts& texts) {
  auto record = Make(texts);
  require_status(Run(&record));
}

template <auto Run>
void write_card_text(Texts& texts) {
  require_status(Run(texts.or_null(0), 1));
}

template <auto Run>
constexpr auto list_drives =
    list_all<Run, _ZYMDB_AimDisk_List, &_ZYMDB_AimDisk_List::disks, &_ZYMDB_AimDisk_List::count>;

template <auto Run>
constexpr auto list_pldm_firmware =
    list_all<Run, _ZYMDB_PLDM_Firmware_List, &_ZYMDB_PLDM_Firmware_List::Firmwares,
             &_ZYMDB_PLDM_Firmware_List::Count>;

template <auto Run>
constexpr auto list_logical_ports =
    list_of_first<Run, _ZYMDB_PCI_LogicalPort_List, &_ZYMDB_PCI_LogicalPort_List::ports,
                  &_ZYMDB_PCI_LogicalPort_List::count>;

template <auto Run>
constexpr auto list_physical_ports =
    list_of_first<Run, _ZYMDB_PCI_PhysicalPort_List, &_ZYMDB_PCI_PhysicalPort_List::ports,
                  &_ZYMDB_PCI_PhysicalPort_List::count>;

// ---- Record access ------------------------------------------------------------------------------------

struct FreeValues {
  void operator()(zym_db_content_values_t* values) const { zym_db_free_content_values(values); }
};
using ValuesPtr = std::unique_ptr<zym_db_content_values_t, FreeValues>;

// One column and its value.
ValuesPtr values_of(const std::string& column, unsigned char* value) {
  ValuesPtr values(zym_db_get_content_values(get_dmdb_handle()));
  require_status(put_text_value(values.get(), column.c_str(), value));
  return values;
}

void run_find(Texts& texts) {
  require_id(find_db_record(get_dmdb_handle(), texts.or_null(0), texts.or_null(1)));
}
void run_insert(Texts& texts) {
  const ValuesPtr values = values_of(texts[1], texts.bytes(2));
  require_id(insert_db_record(get_dmdb_handle(), texts.or_null(0), values.get()));
}
template <auto Run>
void run_update(Texts& texts) {
  const ValuesPtr values = values_of(texts[1], texts.bytes(2));
  require_id(Run(get_dmdb_handle(), texts.or_null(0), texts.or_null(3), values.get(), texts.or_null(4)));
}
void run_delete(Texts& texts) {
  const _zym_db_param_t params[] = {{3, 0, 1, 1}, {2, 0, 1, 2}};
  require_status(delete_db_record(get_dmdb_handle(), texts.or_null(0), texts.or_null(1), params, 2));
}
void run_put(Texts& texts) {
  const ValuesPtr values = values_of("FirmwareName", texts.bytes(1));
  require_status(put_text_value(values.get(), texts.or_null(0), texts.bytes(1)));
  require_id(insert_db_record(get_dmdb_handle(), "Firmwares", values.get()));
}
void run_term(Texts& texts) {
  const std::string term = get_sql_str(texts.or_null(0), texts.bytes(1));
  require_id(find_db_record(get_dmdb_handle(), "Firmwares", term.c_str()));
}

// The property database, which is as it was when this goes out of scope.
class Properties {
 public:
  Properties() : handle_(zym_db_open("localhost", "root", "", "propertiesdb", 0)) {}
  ~Properties() {
    clear("propertiesDCTbl");
    zym_db_close(handle_);
  }
  Properties(const Properties&) = delete;
  Properties& operator=(const Properties&) = delete;

  // A name that is there already keeps its value.
  void add(const std::string& name, unsigned char value) {
    const unsigned char blob[] = {1, value};
    const ValuesPtr values(zym_db_get_content_values(handle_));
    zym_db_content_put_text(values.get(), "propName", name.c_str());
    zym_db_content_put_blob(values.get(), "propValue", blob, sizeof blob);
    require_status(zym_db_insert(handle_, "propertiesDCTbl", values.get(), 0, nullptr));
  }

  void clear(const char* table) { zym_db_delete(handle_, table, nullptr, nullptr, 0, nullptr); }

 private:
  _zym_db_handle_t* const handle_;
};

// ---- Those of a form of their own ---------------------------------------------------------------------

void run_memory_with_filter(Texts& texts) {
  const _zym_db_param_t slot{2, 0, 0, 1};
  _ZYMDB_Memory record{};
  require_status(zymdb_get_memory_with_filter(&record, texts.or_null(0), texts.size() > 1 ? &slot : nullptr));
  require_texts(record);
}
void run_processor(Texts&) {
  _ZYMDB_Processor record{};
  record._id = 1;
  require_status(zymdb_get_processor(&record));
  require_texts(record);
}
void run_smart_info(Texts& texts) {
  const _ZYMDB_Memory record = memory_of(texts);
  for (const int mode : {0, 2, 8}) require_status(zymdb_update_dcpmm_smart_info(&record, mode));
}

void run_function_keys(Texts& texts) {
  _ZYMDB_PCI_FunKey_List list{};
  require_status(zymdb_get_pci_funkey_list_by_filter(texts.size() > 0 ? texts.text(0) : nullptr, &list));
  take(list.keys, list.count);
}
void run_card_name(Texts&) {
  for (int size = 1; size <= 140; size += 46) {
    const auto name = std::make_unique<char[]>(static_cast<size_t>(size));
    require_status(zymdb_get_pci_cardname_by_funkey(1, name.get(), size));
    require(strnlen(name.get(), static_cast<size_t>(size)) < static_cast<size_t>(size),
            "a name goes on beyond its buffer");
  }
}
void run_logical_ports_of_port(Texts&) {
  _ZYMDB_PCI_LogicalPort_List list{};
  require_status(zymdb_get_network_logical_port_list2(1, 1, &list));
  take(list.ports, list.count);
}

void run_update_adapter_firmware(Texts& texts) {
  _ZYMDB_PCI_Firmware records[] = {firmware_of(texts), firmware_of(texts)};
  _ZYMDB_PCI_Firmware& r = records[1];
  fill_whole(texts, r.SoftwareID, r.FirmwareName, r.VersionString, r.Description, r.ReleaseDate,
             r.Manufacture);
  _ZYMDB_PCI_Firmware_List list{2, records};
  require_status(zymdb_update_adapter_firmware_list(1, &list));
}
void run_insert_or_update_firmware(Texts& texts) {
  const _ZYMDB_PCI_Firmware record = firmware_of(texts);
  require_status(zymdb_insert_or_update_firmware_info(1, &record));
}
void run_pldm_firmware(Texts&) {
  _ZYMDB_PLDM_Firmware record{};
  require_status(zymdb_get_pldm_firmware(1, 1, &record, 1, 1));
  require_texts(record);
}
void run_update_pldm_firmware(Texts& texts) {
  _ZYMDB_PLDM_Firmware record = pldm_firmware_of(texts);
  require_status(zymdb_update_pldm_firmware(1, 1, &record));
}
void run_insert_or_update_pldm_firmware(Texts& texts) {
  const _ZYMDB_PLDM_Firmware record = pldm_firmware_of(texts);
  require_status(zymdb_insert_or_update_pldm_firmware(1, 1, 1, 1, &record));
}
void run_update_uefi_version(Texts& texts) {
  require_status(zymdb_update_dpu_uefi_version(3, texts.or_null(0)));
}
void run_uefi_version(Texts&) {
  char version[20] = {};
  require_status(zymdb_get_dpu_uefi_version(3, version, sizeof version));
  require_ended(version);
}
void run_insert_event(Texts& texts) {
  const _ZYMDB_DPU_Event event = event_of(texts);
  uint32_t next = 0;
  require_status(dpu_insert_log(1, &event, &next));
}

void run_save_settings(Texts& texts) {
  ZYMDB_PCI_Config_Set list[2] = {};
  fill(texts, list[0].SettingID, list[0].PendingValue, list[1].SettingID, list[1].PendingValue);
  require_status(zymdb_save_pci_configSet_list(list, 2));
  // The manager keeps what it accepted in the property database.
  Properties().clear("biosPendingValue");
}
void run_setting_families(Texts&) {
  std::vector<char> ids(1 << 16);
  require_status(zymdb_get_pci_configID(1, ids.data()));
}
void run_setting_count(Texts& texts) {
  uint16_t count = 0;
  require_status(zymdb_get_pci_configSet_count(1, texts.or_null(0), &count));
  require(count <= 3, "counts settings that there are not", texts[0]);
}
void run_settings(Texts& texts) {
  for (unsigned expected = 0; expected <= 3; ++expected) {
    const std::unique_ptr<ZYMDB_PCI_Config_Setting[]> records(new ZYMDB_PCI_Config_Setting[expected]());
    uint16_t filled = 0;
    require_status(zymdb_get_pci_configSet_list(1, texts.or_null(0), expected, records.get(), 0, &filled));
    require(filled <= expected, "fills more settings than there is room for", texts[0]);
    for (unsigned i = 0; i < filled; ++i) require_texts(records[i]);
  }
}
void run_file_exists(Texts& texts) {
  const std::string path = texts[0].c_str();
  // What is not there does not appear by being looked for.
  require(!fileexist(path + "/there/is/no/such"), "finds a file that there is not", path);
}

void run_update_drive_version(Texts& texts) {
  require_status(zymdb_update_nvme_disk_firmware_version(1, 1, texts.or_null(0)));
}
void run_controller_drives(Texts&) {
  for (int kind = 0; kind <= 5; ++kind) {
    _ZYMDB_AimDisk_List list{};
    require_status(zymdb_get_ctrl_aim_disk_list(1, &list, kind));
    take(list.disks, list.count);
  }
}
void run_merged_drives(Texts&) {
  _ZYMDB_AimDisk_List list{};
  zymdb_get_merged_disk_list(&list);
  take(list.disks, list.count);
}
// The bays of a backplane are found by the names of properties.
void run_u2_drives(Texts& texts) {
  Properties properties;
  properties.add(texts[0], 3);
  properties.add(texts[1], 8);
  list_drives<zymdb_get_u2_aic_nvme_disk_list>(texts);
  list_drives<zymdb_get_disk_list>(texts);
}
void run_nvme_drive(Texts&) {
  for (const int place : {1, 2}) {
    _ZYMDB_AimDisk record{};
    require_status(zymdb_get_nvme_aim_disk(place, 1, &record));
    require_texts(record);
  }
}

// By area, in the order of the headers.
constexpr Operation kOperations[] = {
    {"find_db_record", Kind::kReads, nullptr, 2, run_find},
    {"insert_db_record", Kind::kWrites, nullptr, 3, run_insert},
    {"update_db_record", Kind::kWrites, nullptr, 5, run_update<update_db_record>},
    {"insert_or_update_db_record", Kind::kWrites, nullptr, 5, run_update<insert_or_update_db_record>},
    {"delete_db_record", Kind::kWrites, nullptr, 2, run_delete},
    {"put_text_value", Kind::kWrites, "Firmwares", 2, run_put},
    {"get_sql_str", Kind::kReads, "", 2, run_term},

    {"zymdb_get_processor", Kind::kShows, "Processor", 6, run_processor},
    {"zymdb_get_memory_with_filter", Kind::kReads, "", 2, run_memory_with_filter},
    {"zymdb_get_memory_by_slot", Kind::kShows, "Memory", 8, read_memory<zymdb_get_memory_by_slot>},
    {"zymdb_get_memory_by_id", Kind::kShows, "Memory", 8, read_memory<zymdb_get_memory_by_id>},
    {"zymdb_update_dcpmm_smart_info", Kind::kWrites, "Memory", 8, run_smart_info},

    {"zymdb_get_pci_keys", Kind::kReads, "", 1,
     list_filtered<zymdb_get_pci_keys, _ZYMDB_PCI_Key_List, &_ZYMDB_PCI_Key_List::keys,
                   &_ZYMDB_PCI_Key_List::count>},
    {"zymdb_get_pci_funkey_list_by_filter", Kind::kReads, "", 1, run_function_keys},
    {"zymdb_get_pci_cardname_by_funkey", Kind::kShows, "PCIAdapter", 2, run_card_name},
    {"zymdb_get_pci_generic_info", Kind::kShows, "PCIs", 1,
     read_first<zymdb_get_pci_generic_info, _ZYMDB_PCI_Generic>},
    {"zymdb_get_pci_generic_info_list", Kind::kReads, "", 1,
     list_filtered<zymdb_get_pci_generic_info_list, _ZYMDB_PCI_Generic_List, &_ZYMDB_PCI_Generic_List::items,
                   &_ZYMDB_PCI_Generic_List::count>},
    {"zymdb_get_pci_misc_info", Kind::kShows, "PCIMisc", 4,
     read_first<zymdb_get_pci_misc_info, _ZYMDB_PCI_Misc>},
    {"zymdb_get_pci_vpd_info", Kind::kShows, "VPDs", 7, read_first<zymdb_get_pci_vpd_info, _ZYMDB_PCI_VPD>},
    {"zymdb_get_pci_adapter_list", Kind::kShows, "PCIAdapter", 2,
     list_all<zymdb_get_pci_adapter_list, _ZYMDB_PCI_Adapter_List, &_ZYMDB_PCI_Adapter_List::adapters,
              &_ZYMDB_PCI_Adapter_List::count>},
    {"zymdb_get_gpu_device_info", Kind::kShows, "PCIGPU", 2,
     read_first<zymdb_get_gpu_device_info, _ZYMDB_GPU_Device>},
    {"zymdb_get_gpu_chip_list", Kind::kShows, "PCIGPUChip", 9,
     list_of_first<zymdb_get_gpu_chip_list, _ZYMDB_GPU_Chip_List, &_ZYMDB_GPU_Chip_List::items,
                   &_ZYMDB_GPU_Chip_List::count>},
    {"zymdb_update_nvidia_gpu_fw_version", Kind::kWrites, "Firmwares", 1,
     write_card_text<zymdb_update_nvidia_gpu_fw_version>},
    {"zymdb_update_nvidia_gpu_fw_release_date", Kind::kWrites, "Firmwares", 1,
     write_card_text<zymdb_update_nvidia_gpu_fw_release_date>},
    {"zymdb_update_nvidia_gpu_serial_number", Kind::kWrites, "VPDs", 1,
     write_card_text<zymdb_update_nvidia_gpu_serial_number>},

    {"zymdb_get_network_logical_port_list", Kind::kShows, "PCILogicalPort", 8,
     list_logical_ports<zymdb_get_network_logical_port_list>},
    {"zymdb_get_network_logical_port_list2", Kind::kShows, "PCILogicalPort", 8, run_logical_ports_of_port},
    {"zymdb_get_all_network_logical_port_list", Kind::kShows, "PCILogicalPort", 8,
     list_logical_ports<zymdb_get_all_network_logical_port_list>},
    {"zymdb_get_network_physical_port_list", Kind::kShows, "PCIPhysicalPort", 2,
     list_physical_ports<zymdb_get_network_physical_port_list>},
    {"zymdb_get_all_network_physical_port_list", Kind::kShows, "PCIPhysicalPort", 2,
     list_physical_ports<zymdb_get_all_network_physical_port_list>},

    {"zymdb_get_pci_firmware_list", Kind::kShows, "Firmwares", 6,
     list_of_first<zymdb_get_pci_firmware_list, _ZYMDB_PCI_Firmware_List,
                   &_ZYMDB_PCI_Firmware_List::Firmwares, &_ZYMDB_PCI_Firmware_List::Count>},
    {"zymdb_update_adapter_firmware_list", Kind::kWrites, "Firmwares", 6, run_update_adapter_firmware},
    {"zymdb_insert_or_update_firmware_info", Kind::kWrites, "Firmwares", 6, run_insert_or_update_firmware},
    {"zymdb_get_pldm_firmware_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_list>},
    {"zymdb_get_pldm_firmware_pending_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_pending_list>},
    {"zymdb_get_pldm_firmware_updated_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_updated_list>},
    {"zymdb_get_pldm_firmware_update_failure_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_update_failure_list>},
    {"zymdb_get_pldm_firmware_update_success_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_update_success_list>},
    {"zymdb_get_pldm_firmware_marvell_ctrl_list", Kind::kShows, "PldmDeviceFirmware", 9,
     list_pldm_firmware<zymdb_get_pldm_firmware_marvell_ctrl_list>},
    {"zymdb_get_pldm_firmware", Kind::kShows, "PldmDeviceFirmware", 9, run_pldm_firmware},
    {"zymdb_update_pldm_firmware", Kind::kWrites, "PldmDeviceFirmware", 9, run_update_pldm_firmware},
    {"zymdb_insert_or_update_pldm_firmware", Kind::kWrites, "PldmDeviceFirmware", 9,
     run_insert_or_update_pldm_firmware},
    {"zymdb_get_embedded_firmware_list", Kind::kShows, "EmbeddedDeviceFirmware", 2,
     list_all<zymdb_get_embedded_firmware_list, _ZYMDB_Embedded_Firmware_List,
              &_ZYMDB_Embedded_Firmware_List::Firmwares, &_ZYMDB_Embedded_Firmware_List::Count>},
    {"zymdb_insert_or_update_embedded_firmware_info", Kind::kWrites, "EmbeddedDeviceFirmware", 2,
     write<zymdb_insert_or_update_embedded_firmware_info, embedded_firmware_of>},
    {"zymdb_update_dpu_uefi_version", Kind::kWrites, "Firmwares PldmDeviceFirmware", 1,
     run_update_uefi_version},
    {"zymdb_get_dpu_uefi_version", Kind::kShows, "Firmwares", 6, run_uefi_version},
    {"dpu_insert_log", Kind::kWrites, "DPUEvents", 2, run_insert_event},
    {"dpu_get_log_by_slot", Kind::kShows, "DPUEvents", 2,
     list_of_first<dpu_get_log_by_slot, _ZYMDB_DPU_Event_List, &_ZYMDB_DPU_Event_List::Events,
                   &_ZYMDB_DPU_Event_List::Count>},

    {"extract_PCISetting_info", Kind::kWrites, "PCISetting", 19, write<extract_PCISetting_info, setting_of>},
    {"zymdb_save_pci_configSet_list", Kind::kWrites, "PCISetting", 4, run_save_settings},
    {"zymdb_get_pci_configID", Kind::kShows, "PCISetting", 19, run_setting_families},
    {"zymdb_get_pci_configSet_count", Kind::kReads, "", 1, run_setting_count},
    {"zymdb_get_pci_configSet_list", Kind::kShows, "PCISetting", 19, run_settings},
    {"fileexist", Kind::kReads, "", 1, run_file_exists},

    {"zymdb_add_update_nvme_aim_disk", Kind::kWrites, "AimDisks", 11,
     write<zymdb_add_update_nvme_aim_disk, drive_of>},
    {"zymdb_update_nvme_disk_firmware_version", Kind::kWrites, "NVMeDrives", 1, run_update_drive_version},
    {"zymdb_update_aim_disk_smart_info", Kind::kWrites, "AimDisks", 11,
     write<zymdb_update_aim_disk_smart_info, drive_of>},
    {"zymdb_update_aim_disk_ctrl_type", Kind::kWrites, "AimDisks", 11,
     write<zymdb_update_aim_disk_ctrl_type, drive_of>},
    {"zymdb_update_aim_disk_vpd_info", Kind::kWrites, "AimDisks", 11,
     write<zymdb_update_aim_disk_vpd_info, drive_of>},
    {"zymdb_get_nvme_disk_list_from_mi_filter", Kind::kReads, "", 1,
     list_filtered<zymdb_get_nvme_disk_list_from_mi_filter, _ZYMDB_AimDisk_List, &_ZYMDB_AimDisk_List::disks,
                   &_ZYMDB_AimDisk_List::count>},
    {"zymdb_get_disk_list_with_filter", Kind::kReads, "", 1,
     list_filtered<zymdb_get_disk_list_with_filter, _ZYMDB_AimDisk_List, &_ZYMDB_AimDisk_List::disks,
                   &_ZYMDB_AimDisk_List::count>},
    {"zymdb_get_disk_list", Kind::kShows, "AimDisks", 9, list_drives<zymdb_get_disk_list>},
    {"zymdb_get_onboard_sata_disk_list", Kind::kShows, "AimDisks", 9,
     list_drives<zymdb_get_onboard_sata_disk_list>},
    {"zymdb_get_m2_disk_list", Kind::kShows, "NVMeDrives", 6, list_drives<zymdb_get_m2_disk_list>},
    {"zymdb_get_7mm_disk_list", Kind::kShows, "AimDisks", 9, list_drives<zymdb_get_7mm_disk_list>},
    {"zymdb_get_ctrl_aim_disk_list", Kind::kShows, "NVMeDrives", 6, run_controller_drives},
    {"zymdb_get_merged_disk_list", Kind::kShows, "AimDisks", 9, run_merged_drives},
    {"zymdb_get_disk_list_funkey", Kind::kShows, "AimDisks", 9,
     list_of_first<zymdb_get_disk_list_funkey, _ZYMDB_AimDisk_List, &_ZYMDB_AimDisk_List::disks,
                   &_ZYMDB_AimDisk_List::count>},
    {"zymdb_get_nvme_aim_disk", Kind::kShows, "NVMeDrives", 6, run_nvme_drive},
    {"zymdb_get_u2_aic_nvme_disk_list", Kind::kShows, "NVMeDrives", 6, run_u2_drives},
};

}  // namespace

Texts::Texts(std::string_view lines, size_t most) {
  while (texts_.size() < most) {
    const size_t end = texts_.size() + 1 < most ? lines.find('\n') : lines.npos;
    // The operations' texts end at a NUL.
    texts_.emplace_back(std::string(lines.substr(0, end)).c_str());
    if (end == lines.npos) return;
    lines.remove_prefix(end + 1);
  }
}

const std::string& Texts::operator[](size_t place) const {
  return place < texts_.size() ? texts_[place] : empty_;
}

const char* Texts::or_null(size_t place) const {
  return place < texts_.size() ? texts_[place].c_str() : nullptr;
}

std::span<const Operation> operations() {
  return kOperations;
}

}  // namespace zymdb::fuzz
