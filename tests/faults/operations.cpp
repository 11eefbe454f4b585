#include "faults/operations.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <type_traits>

#include "controller/database_client.h"
#include "faults/example_rows.h"
#include "zymdb_cpu_mem.h"
#include "zymdb_db.h"
#include "zymdb_firmware.h"
#include "zymdb_network.h"
#include "zymdb_pci.h"
#include "zymdb_pci_settings.h"
#include "zymdb_storage.h"

namespace faults {
namespace {

// What outputs hold before the call. As a pointer it is one that nobody may follow.
constexpr int kUntouched = 0xA5;

// An output that the call writes.
template <class Value>
class Output {
  static_assert(std::is_trivially_copyable_v<Value>);

 public:
  Output() { std::memset(&value_, kUntouched, sizeof value_); }
  Value* get() { return &value_; }

  Outcome after(int64_t status) const {
    unsigned char before[sizeof value_];
    std::memset(before, kUntouched, sizeof before);
    return {status, std::memcmp(&value_, before, sizeof before) == 0 ? "untouched" : "written"};
  }

 private:
  Value value_;
};

// A list that the call fills; what it hands out is freed. Some operations ask for an empty one.
enum class Before { kAnything, kEmpty };

template <class List, Before before = Before::kAnything>
class Listing {
 public:
  Listing() {
    if (before == Before::kAnything) std::memset(&former_, kUntouched, sizeof former_);
    std::memcpy(&list_, &former_, sizeof list_);
  }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  ~Listing() {
    if (!has_former_items()) std::free(items());
  }

  List* get() { return &list_; }

  Outcome after(int64_t status) const { return {status, text()}; }

 private:
  void* items() const {
    const auto& [count, items] = list_;
    return items;
  }
  bool has_former_items() const {
    const auto& [count, former_items] = former_;
    return items() == former_items;
  }
  std::string text() const {
    const auto& [count, items] = list_;
    const auto& [former_count, former_items] = former_;
    if (former_items != nullptr && items == former_items)
      return count == former_count ? "untouched" : count == 0 ? "count 0" : "torn";
    if (items == nullptr) return count == 0 ? "none" : "torn";
    return count == 0 ? "empty array" : std::to_string(count) + " listed";
  }

  List former_{};
  List list_{};
};

using Drives = Listing<_ZYMDB_AimDisk_List>;
using MergedDrives = Listing<_ZYMDB_AimDisk_List, Before::kEmpty>;
using Functions = Listing<_ZYMDB_PCI_FunKey_List>;
using LogicalPorts = Listing<_ZYMDB_PCI_LogicalPort_List>;
using PhysicalPorts = Listing<_ZYMDB_PCI_PhysicalPort_List>;
using PldmComponents = Listing<_ZYMDB_PLDM_Firmware_List>;

template <class Record, size_t N>
void set(char (Record::*field)[N], Record& record, const char* text) {
  std::strncpy(record.*field, text, N - 1);
}

// A value set, as the callers of the record helpers have one.
class ValueSet {
 public:
  ValueSet() : values_(zym_db_get_content_values(get_dmdb_handle())) {}
  ~ValueSet() {
    if (values_ != nullptr) zym_db_free_content_values(values_);
  }
  ValueSet(const ValueSet&) = delete;
  ValueSet& operator=(const ValueSet&) = delete;

  zym_db_content_values_t* get() const { return values_; }
  const ValueSet& with_name(const char* name) const {
    if (values_ != nullptr) zym_db_content_put_text(values_, "CardName", name);
    return *this;
  }

 private:
  zym_db_content_values_t* values_;
};

// Of a row's id, whichever it is, 1.
int64_t row_or_none(int64_t id) {
  return id > 0 ? 1 : id;
}

_ZYMDB_PCI_Firmware component() {
  _ZYMDB_PCI_Firmware record{};
  set(&_ZYMDB_PCI_Firmware::FirmwareName, record, "UEFI driver");
  set(&_ZYMDB_PCI_Firmware::VersionString, record, "14.2.1");
  set(&_ZYMDB_PCI_Firmware::ReleaseDate, record, "2026-01-01");
  set(&_ZYMDB_PCI_Firmware::SoftwareID, record, "1");
  record.Classification = 1;
  return record;
}

_ZYMDB_PLDM_Firmware pldm_component() {
  _ZYMDB_PLDM_Firmware record{};
  set(&_ZYMDB_PLDM_Firmware::DeviceName, record, "controller");
  set(&_ZYMDB_PLDM_Firmware::SoftwareID, record, "2");
  record.DeviceType = 15;
  record.Location = kSlot;
  record.SlotNo = kSlotNo;
  return record;
}

_ZYMDB_AimDisk drive() {
  _ZYMDB_AimDisk record{};
  record.LocationId = kBay;
  record.BayNo = kBayNo;
  record.CtrlType = 2;
  record.DriveTypeId = 3;
  record.Temperature = 60;
  set(&_ZYMDB_AimDisk::SerialNo, record, "another");
  set(&_ZYMDB_AimDisk::FwVersion, record, "2.0");
  return record;
}

ZYMDB_PCI_Config_Setting setting() {
  ZYMDB_PCI_Config_Setting record{};
  set(&ZYMDB_PCI_Config_Setting::SettingID, record, kSettingId);
  set(&ZYMDB_PCI_Config_Setting::CurrentValue, record, "Disabled");
  record.PfaKey = kFunction;
  return record;
}

// An image of an FRU inventory without a single field.
Outcome decode_fru_image() {
  unsigned char image[256] = {1, 0, 0, 0, 1};
  _ZYMDB_AimDisk record{};
  const int status = parse_nvme_drive_vpd(image, sizeof image, &record);
  return {status, ""};
}

// In the order of the headers.
const std::vector<Operation> kOperations = {
    // zymdb_db.h
    {"find_db_record",
     [] {
       return Outcome{find_db_record(get_dmdb_handle(), "PCIAdapter", "PCIKey=65537"), ""};
     }},
    {"insert_db_record",
     [] {
       const ValueSet values;
       return Outcome{
           row_or_none(insert_db_record(get_dmdb_handle(), "PCIAdapter", values.with_name("new").get())), ""};
     }},
    {"update_db_record",
     [] {
       const ValueSet values;
       return Outcome{update_db_record(get_dmdb_handle(), "PCIAdapter", "PCIKey=65537",
                                       values.with_name("new").get(), "CardName!=\"new\""),
                      ""};
     }},
    {"insert_or_update_db_record",
     [] {
       const ValueSet values;
       return Outcome{
           row_or_none(insert_or_update_db_record(get_dmdb_handle(), "PCIAdapter", "PCIKey=65537",
                                                  values.with_name("new").get(), "CardName!=\"new\"")),
           ""};
     }},
    {"delete_db_record",
     [] {
       return Outcome{delete_db_record(get_dmdb_handle(), "PCIAdapter", "PCIKey=9", nullptr, 0), ""};
     }},
    {"put_text_value",
     [] {
       const ValueSet values;
       unsigned char text[] = "new";
       if (values.get() == nullptr) return Outcome{ZYM_DB_STATUS_NO_MEMORY, ""};
       return Outcome{put_text_value(values.get(), "CardName", text), ""};
     }},
    {"get_sql_str",
     [] {
       unsigned char text[] = "a value";
       return Outcome{0, get_sql_str("CardName", text)};
     }},

    // zymdb_cpu_mem.h
    {"zymdb_get_processor_list",
     [] {
       Listing<_ZYMDB_Processor_List> list;
       return list.after(zymdb_get_processor_list(list.get()));
     }},
    {"zymdb_get_processor",
     [] {
       Output<_ZYMDB_Processor> processor;
       const uint32_t untouched = processor.get()->_id;
       processor.get()->_id = 1;
       const int status = zymdb_get_processor(processor.get());
       if (status != ZYM_DB_STATUS_OK) processor.get()->_id = untouched;
       return processor.after(status);
     }},
    {"zymdb_is_amd",
     [] {
       return Outcome{zymdb_is_amd(), ""};
     }},
    {"zymdb_get_memory_list",
     [] {
       Listing<_ZYMDB_Memory_List> list;
       return list.after(zymdb_get_memory_list(list.get()));
     }},
    {"zymdb_get_memory_with_filter",
     [] {
       Output<_ZYMDB_Memory> module;
       return module.after(zymdb_get_memory_with_filter(module.get(), "SlotNo>0", nullptr));
     }},
    {"zymdb_get_memory_by_slot",
     [] {
       Output<_ZYMDB_Memory> module;
       return module.after(zymdb_get_memory_by_slot(module.get(), 1));
     }},
    {"zymdb_get_memory_by_id",
     [] {
       Output<_ZYMDB_Memory> module;
       return module.after(zymdb_get_memory_by_id(module.get(), 1));
     }},
    {"zymdb_get_mpfa_health_by_slot",
     [] {
       Output<unsigned[3]> health;
       unsigned* const values = *health.get();
       return health.after(zymdb_get_mpfa_health_by_slot(1, values, values + 1, values + 2));
     }},
    {"zymdb_get_AEP_memory_list",
     [] {
       Listing<_ZYMDB_Memory_List> list;
       return list.after(zymdb_get_AEP_memory_list(list.get()));
     }},
    {"zymdb_update_dcpmm_smart_info",
     [] {
       _ZYMDB_Memory module{};
       module._id = 1;
       return Outcome{zymdb_update_dcpmm_smart_info(&module, 8), ""};
     }},
    {"bps_format_hstate_str",
     [] {
       Output<char[16]> text;
       return text.after(static_cast<int>(bps_format_hstate_str(2, *text.get(), 16)));
     }},
    {"bps_format_security_str",
     [] {
       Output<char[16]> text;
       bps_format_security_str(2, *text.get(), 16);
       return text.after(0);
     }},

    // zymdb_pci.h
    {"zymdb_get_pci_keys",
     [] {
       Listing<_ZYMDB_PCI_Key_List, Before::kEmpty> list;
       return list.after(zymdb_get_pci_keys(list.get(), "SlotNo>0"));
     }},
    {"zymdb_get_dpu_keys",
     [] {
       Listing<_ZYMDB_PCI_Key_List, Before::kEmpty> list;
       return list.after(zymdb_get_dpu_keys(list.get()));
     }},
    {"zymdb_get_pci_funkey_list_by_filter",
     [] {
       Functions list;
       char filter[] = "SlotNo>0";
       return list.after(zymdb_get_pci_funkey_list_by_filter(filter, list.get()));
     }},
    {"zymdb_get_pci_hardwareidtype_by_funkey",
     [] {
       Output<unsigned> id;
       Output<unsigned char> type;
       const int status = zymdb_get_pci_hardwareidtype_by_funkey(kFunction, id.get(), type.get());
       Outcome outcome = id.after(status);
       if (type.after(status).outputs != outcome.outputs) outcome.outputs = "torn";
       return outcome;
     }},
    {"zymdb_get_pci_funkey_list_by_slot",
     [] {
       Functions list;
       return list.after(zymdb_get_pci_funkey_list_by_slot(kSlot, kSlotNo, list.get()));
     }},
    {"zymdb_get_pci_funkey_list",
     [] {
       Functions list;
       return list.after(zymdb_get_pci_funkey_list(kAdapter, list.get()));
     }},
    {"zymdb_get_pci_function_type",
     [] {
       Output<unsigned> type;
       return type.after(zymdb_get_pci_function_type(kFunction, type.get()));
     }},
    {"zymdb_get_pci_function_oob_type",
     [] {
       Output<unsigned> type;
       return type.after(zymdb_get_pci_function_oob_type(kFunction, type.get()));
     }},
    {"zymdb_get_pci_cardname_by_funkey",
     [] {
       Output<char[129]> name;
       return name.after(zymdb_get_pci_cardname_by_funkey(kFunction, *name.get(), 129));
     }},
    {"zymdb_get_pci_id_by_funkey",
     [] {
       Output<unsigned short[4]> ids;
       unsigned short* const id = *ids.get();
       return ids.after(zymdb_get_pci_id_by_funkey(kFunction, id, id + 1, id + 2, id + 3));
     }},
    {"zymdb_get_pci_generic_info",
     [] {
       Output<_ZYMDB_PCI_Generic> info;
       return info.after(zymdb_get_pci_generic_info(kFunction, info.get()));
     }},
    {"zymdb_get_pci_generic_info_list",
     [] {
       Listing<_ZYMDB_PCI_Generic_List> list;
       return list.after(zymdb_get_pci_generic_info_list(list.get(), "SlotNo>0"));
     }},
    {"zymdb_get_pci_misc_info",
     [] {
       Output<_ZYMDB_PCI_Misc> misc;
       return misc.after(zymdb_get_pci_misc_info(kFunction, misc.get()));
     }},
    {"zymdb_get_pci_vpd_info",
     [] {
       Output<_ZYMDB_PCI_VPD> vpd;
       return vpd.after(zymdb_get_pci_vpd_info(kFunction, vpd.get()));
     }},
    {"zymdb_get_pci_adapter_list",
     [] {
       Listing<_ZYMDB_PCI_Adapter_List> list;
       return list.after(zymdb_get_pci_adapter_list(list.get()));
     }},
    {"zymdb_get_adapter_health_status",
     [] {
       Output<uint8_t> health;
       return health.after(zymdb_get_adapter_health_status(kSlot, kSlotNo, health.get()));
     }},
    {"zymdb_set_adapter_health_status",
     [] {
       return Outcome{zymdb_set_adapter_health_status(kSlot, kSlotNo, 2), ""};
     }},
    {"zymdb_get_adapter_pcikey_by_slotNo",
     [] {
       Output<uint32_t> key;
       return key.after(zymdb_get_adapter_pcikey_by_slotNo(kSlot, kSlotNo, key.get()));
     }},
    {"zymdb_get_ncsi_id_by_slotNo",
     [] {
       Output<uint8_t[2]> ids;
       uint8_t* const id = *ids.get();
       return ids.after(zymdb_get_ncsi_id_by_slotNo(kSlot, kSlotNo, id, id + 1));
     }},
    {"zymdb_set_ncsi_id_by_slotNo",
     [] {
       return Outcome{zymdb_set_ncsi_id_by_slotNo(kSlot, kSlotNo, 1, 2, 3), ""};
     }},
    {"zymdb_get_ncsi_id_list",
     [] {
       Listing<_ZYMDB_NCSIPackageID_List> list;
       return list.after(zymdb_get_ncsi_id_list(list.get()));
     }},
    {"zymdb_merge_aim_ucm_pfa",
     [] {
       return Outcome{zymdb_merge_aim_ucm_pfa(), ""};
     }},
    {"hc_card_table",
     [] {
       return Outcome{hc_card_table[0].VendorId == 0 ? 1 : 0, ""};
     }},
    {"zymdb_get_hc_card_count",
     [] {
       return Outcome{zymdb_get_hc_card_count(), ""};
     }},
    {"zymdb_get_gpu_device_info",
     [] {
       Output<_ZYMDB_GPU_Device> device;
       return device.after(zymdb_get_gpu_device_info(kFunction, device.get()));
     }},
    {"zymdb_get_gpu_chip_list",
     [] {
       Listing<_ZYMDB_GPU_Chip_List> list;
       return list.after(zymdb_get_gpu_chip_list(kFunction, list.get()));
     }},
    {"zymdb_update_nvidia_gpu_fw_version",
     [] {
       return Outcome{zymdb_update_nvidia_gpu_fw_version("96.00", kGpuBus), ""};
     }},
    {"zymdb_update_nvidia_gpu_fw_release_date",
     [] {
       return Outcome{zymdb_update_nvidia_gpu_fw_release_date("2026-01-01", kGpuBus), ""};
     }},
    {"zymdb_update_nvidia_gpu_serial_number",
     [] {
       return Outcome{zymdb_update_nvidia_gpu_serial_number("S1", kGpuBus), ""};
     }},

    // zymdb_network.h
    {"zymdb_get_network_info",
     [] {
       Output<_ZYMDB_PCI_Network_Info> info;
       return info.after(zymdb_get_network_info(kFunction, info.get()));
     }},
    {"zymdb_get_network_logical_port_list",
     [] {
       LogicalPorts list;
       return list.after(zymdb_get_network_logical_port_list(kFunction, list.get()));
     }},
    {"zymdb_get_network_logical_port_list2",
     [] {
       LogicalPorts list;
       return list.after(zymdb_get_network_logical_port_list2(kFunction, 0, list.get()));
     }},
    {"zymdb_get_all_network_logical_port_list",
     [] {
       LogicalPorts list;
       return list.after(zymdb_get_all_network_logical_port_list(kAdapter, list.get()));
     }},
    {"zymdb_get_network_physical_port_list",
     [] {
       PhysicalPorts list;
       return list.after(zymdb_get_network_physical_port_list(kFunction, list.get()));
     }},
    {"zymdb_get_all_network_physical_port_list",
     [] {
       PhysicalPorts list;
       return list.after(zymdb_get_all_network_physical_port_list(kAdapter, list.get()));
     }},
    {"zymdb_get_network_physical_port_link_state",
     [] {
       Output<_ZYMDB_PCI_PortLinkState> state;
       return state.after(zymdb_get_network_physical_port_link_state(kFunction, state.get(), 1));
     }},
    {"zymdb_set_network_physical_port_link_state",
     [] {
       const _ZYMDB_PCI_PortLinkState state{1, 25000, 3, 4, 1};
       return Outcome{zymdb_set_network_physical_port_link_state(kFunction, &state, 1), ""};
     }},

    // zymdb_firmware.h
    {"zymdb_get_pci_firmware_list",
     [] {
       Listing<_ZYMDB_PCI_Firmware_List> list;
       return list.after(zymdb_get_pci_firmware_list(kFunction, list.get()));
     }},
    {"zymdb_update_adapter_firmware_list",
     [] {
       _ZYMDB_PCI_Firmware records[] = {component(), component()};
       records[1].Classification = 13;
       _ZYMDB_PCI_Firmware_List list{2, records};
       return Outcome{zymdb_update_adapter_firmware_list(kAdapter, &list), ""};
     }},
    {"zymdb_insert_or_update_firmware_info",
     [] {
       const _ZYMDB_PCI_Firmware record = component();
       return Outcome{zymdb_insert_or_update_firmware_info(kHardware, &record), ""};
     }},
    {"zymdb_get_pldm_firmware_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware_pending_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_pending_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware_updated_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_updated_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware_update_failure_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_update_failure_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware_update_success_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_update_success_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware_marvell_ctrl_list",
     [] {
       PldmComponents list;
       return list.after(zymdb_get_pldm_firmware_marvell_ctrl_list(list.get()));
     }},
    {"zymdb_get_pldm_firmware",
     [] {
       Output<_ZYMDB_PLDM_Firmware> record;
       return record.after(zymdb_get_pldm_firmware(kSlot, kSlotNo, record.get(), -1, -1));
     }},
    {"zymdb_update_pldm_firmware",
     [] {
       _ZYMDB_PLDM_Firmware record = pldm_component();
       return Outcome{zymdb_update_pldm_firmware(kSlot, kSlotNo, &record), ""};
     }},
    {"zymdb_clear_all_pldm_firmware_pending_status",
     [] {
       return Outcome{zymdb_clear_all_pldm_firmware_pending_status(), ""};
     }},
    {"zymdb_clear_pldm_firmware_by_type",
     [] {
       return Outcome{zymdb_clear_pldm_firmware_by_type(99), ""};
     }},
    {"zymdb_insert_or_update_pldm_firmware",
     [] {
       const _ZYMDB_PLDM_Firmware record = pldm_component();
       return Outcome{zymdb_insert_or_update_pldm_firmware(1, 2, 3, 4, &record), ""};
     }},
    {"zymdb_get_embedded_firmware_list",
     [] {
       Listing<_ZYMDB_Embedded_Firmware_List> list;
       return list.after(zymdb_get_embedded_firmware_list(list.get()));
     }},
    {"zymdb_insert_or_update_embedded_firmware_info",
     [] {
       _ZYMDB_Embedded_Firmware record{};
       set(&_ZYMDB_Embedded_Firmware::SoftwareID, record, "1");
       record.DeviceIndex = 1;
       record.Version = 2;
       return Outcome{zymdb_insert_or_update_embedded_firmware_info(&record), ""};
     }},
    {"zymdb_clear_all_embedded_firmware_info",
     [] {
       return Outcome{zymdb_clear_all_embedded_firmware_info(), ""};
     }},
    {"zymdb_update_dpu_uefi_version",
     [] {
       return Outcome{zymdb_update_dpu_uefi_version(kSlotNo, "4.8.0"), ""};
     }},
    {"zymdb_get_dpu_uefi_version",
     [] {
       Output<char[33]> version;
       return version.after(zymdb_get_dpu_uefi_version(kSlotNo, *version.get(), 33));
     }},
    {"dpu_insert_log",
     [] {
       const _ZYMDB_DPU_Event event{0, 1'700'000'000, "UEFI", "boot"};
       Output<uint32_t> next_id;
       return next_id.after(dpu_insert_log(kSlotNo, &event, next_id.get()));
     }},
    {"dpu_get_log_by_slot",
     [] {
       Listing<_ZYMDB_DPU_Event_List> list;
       return list.after(dpu_get_log_by_slot(kSlotNo, list.get()));
     }},
    {"dpu_clear_logs_by_slot",
     [] {
       return Outcome{dpu_clear_logs_by_slot(99), ""};
     }},
    {"retimer_update_fw",
     [] {
       const _ZYMDB_Retimer_Update_Req request{};
       return Outcome{retimer_update_fw(&request), ""};
     }},
    {"retimer_get_fw_update_progress",
     [] {
       Output<_ZYMDB_Retimer_Progress> progress;
       return progress.after(retimer_get_fw_update_progress(1, progress.get()));
     }},

    // zymdb_pci_settings.h
    {"extract_PCISetting_info",
     [] {
       const ZYMDB_PCI_Config_Setting record = setting();
       return Outcome{extract_PCISetting_info(&record), ""};
     }},
    {"zymdb_save_pci_configSet_list",
     [] {
       ZYMDB_PCI_Config_Set entries[2] = {};
       for (ZYMDB_PCI_Config_Set& entry : entries) {
         set(&ZYMDB_PCI_Config_Set::SettingID, entry, kSettingId);
         entry.Result = 0xA5A5A5A5;
       }
       set(&ZYMDB_PCI_Config_Set::PendingValue, entries[0], "Enabled");
       set(&ZYMDB_PCI_Config_Set::PendingValue, entries[1], "Disabled");
       const int status = zymdb_save_pci_configSet_list(entries, 2);
       return Outcome{status, entries[0].Result == 0xA5A5A5A5 ? "untouched" : "written"};
     }},
    {"zymdb_get_pci_configID",
     [] {
       char ids[1024] = "";
       const int status = zymdb_get_pci_configID(kFunction, ids);
       return Outcome{status, ids};
     }},
    {"zymdb_get_pci_configSet_count",
     [] {
       Output<unsigned short> count;
       return count.after(zymdb_get_pci_configSet_count(kFunction, "Slot", count.get()));
     }},
    {"zymdb_get_pci_configSet_list",
     [] {
       static ZYMDB_PCI_Config_Setting records[2];
       Output<unsigned short> filled;
       return filled.after(zymdb_get_pci_configSet_list(kFunction, nullptr, 2, records, 0, filled.get()));
     }},
    {"fileexist",
     [] {
       return Outcome{fileexist("/"), ""};
     }},

    // zymdb_storage.h
    {"rm_invalid_chars",
     [] {
       char text[8] = "abc  \n";
       rm_invalid_chars(text, sizeof text);
       return Outcome{0, text};
     }},
    {"parse_nvme_drive_vpd", decode_fru_image},
    {"get_manuf_date",
     [] {
       const unsigned char minutes[3] = {0, 0, 1};
       Output<int[3]> date;
       int* const part = *date.get();
       get_manuf_date(minutes, part, part + 1, part + 2);
       return date.after(0);
     }},
    {"vpd_manuf_date_to_ymd",
     [] {
       char text[16] = "";
       vpd_manuf_date_to_ymd("0116", text, sizeof text);
       return Outcome{0, text};
     }},
    {"driveModel2Manufacture",
     [] {
       return Outcome{0, driveModel2Manufacture("MZ7L3480")};
     }},
    {"trim_drive_model",
     [] {
       char model[] = "INTEL SSDPE2KX010T8";
       return Outcome{0, trim_drive_model(model)};
     }},
    {"zymdb_get_nvme_drv_funkey",
     [] {
       Output<unsigned> key;
       return key.after(zymdb_get_nvme_drv_funkey(kSlot, kNvmeSlot, key.get()));
     }},
    {"zymdb_nvme_aim_disk_exist",
     [] {
       return Outcome{zymdb_nvme_aim_disk_exist(kBay, kBayNo), ""};
     }},
    {"zymdb_add_update_nvme_aim_disk",
     [] {
       const _ZYMDB_AimDisk record = drive();
       return Outcome{zymdb_add_update_nvme_aim_disk(&record), ""};
     }},
    {"zymdb_update_nvme_disk_firmware_version",
     [] {
       return Outcome{zymdb_update_nvme_disk_firmware_version(kBay, kBayNo, "2.0"), ""};
     }},
    {"zymdb_update_aim_disk_smart_info",
     [] {
       const _ZYMDB_AimDisk record = drive();
       return Outcome{zymdb_update_aim_disk_smart_info(&record), ""};
     }},
    {"zymdb_update_aim_disk_ctrl_type",
     [] {
       const _ZYMDB_AimDisk record = drive();
       return Outcome{zymdb_update_aim_disk_ctrl_type(&record), ""};
     }},
    {"zymdb_update_aim_disk_presence",
     [] {
       return Outcome{zymdb_update_aim_disk_presence(kBay, kBayNo, 0), ""};
     }},
    {"zymdb_update_aim_disk_vpd_info",
     [] {
       const _ZYMDB_AimDisk record = drive();
       return Outcome{zymdb_update_aim_disk_vpd_info(&record), ""};
     }},
    {"zymdb_get_mvl_ctrl_type",
     [] {
       Output<unsigned char> type;
       return type.after(zymdb_get_mvl_ctrl_type(type.get(), 1));
     }},
    {"zymdb_get_ctrl_slot",
     [] {
       Output<unsigned char> slot;
       return slot.after(zymdb_get_ctrl_slot(kDevice, kSubsystemDevice, slot.get()));
     }},
    {"zymdb_get_marvell_ctrl_slots",
     [] {
       unsigned char slots[8];
       Output<unsigned char> count;
       return count.after(zymdb_get_marvell_ctrl_slots(slots, 8, count.get()));
     }},
    {"zymdb_get_bp_drive_count",
     [] {
       Output<unsigned char[2]> counts;
       unsigned char* const count = *counts.get();
       return counts.after(zymdb_get_bp_drive_count(count, count + 1));
     }},
    {"zymdb_get_nvme_disk_list_from_mi_filter",
     [] {
       Drives list;
       return list.after(zymdb_get_nvme_disk_list_from_mi_filter(list.get(), nullptr));
     }},
    {"zymdb_get_disk_list_with_filter",
     [] {
       Drives list;
       return list.after(zymdb_get_disk_list_with_filter(list.get(), nullptr));
     }},
    {"zymdb_get_disk_list",
     [] {
       MergedDrives list;
       return list.after(zymdb_get_disk_list(list.get()));
     }},
    {"zymdb_get_onboard_sata_disk_list",
     [] {
       MergedDrives list;
       return list.after(zymdb_get_onboard_sata_disk_list(list.get()));
     }},
    {"zymdb_get_m2_disk_list",
     [] {
       MergedDrives list;
       return list.after(zymdb_get_m2_disk_list(list.get()));
     }},
    {"zymdb_get_7mm_disk_list",
     [] {
       MergedDrives list;
       return list.after(zymdb_get_7mm_disk_list(list.get()));
     }},
    {"zymdb_get_ctrl_aim_disk_list",
     [] {
       MergedDrives list;
       return list.after(zymdb_get_ctrl_aim_disk_list(kSlotNo, list.get(), kBay));
     }},
    {"zymdb_get_merged_disk_list",
     [] {
       MergedDrives list;
       zymdb_get_merged_disk_list(list.get());
       return list.after(0);
     }},
    {"zymdb_get_disk_list_funkey",
     [] {
       Drives list;
       return list.after(zymdb_get_disk_list_funkey(kDriveController, list.get()));
     }},
    {"zymdb_get_nvme_aim_disk",
     [] {
       Output<_ZYMDB_AimDisk> record;
       return record.after(zymdb_get_nvme_aim_disk(kBay, kBayNo, record.get()));
     }},
    {"zymdb_get_u2_aic_nvme_disk_list",
     [] {
       Drives list;
       return list.after(zymdb_get_u2_aic_nvme_disk_list(list.get()));
     }},
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  stream << outcome.status;
  if (!outcome.outputs.empty()) stream << ", " << outcome.outputs;
  return stream;
}

const std::vector<Operation>& operations() {
  return kOperations;
}

const Operation& operation(const std::string& name) {
  const auto found = std::ranges::find(kOperations, name, &Operation::name);
  if (found == kOperations.end()) throw std::invalid_argument("no call of " + name);
  return *found;
}

}  // namespace faults
