#include <span>

#include "controller/ruvo_log.h"
#include "db/code_text.h"
#include "db/query.h"
#include "db/rows.h"
#include "db/system_log.h"
#include "db/values.h"
#include "firmware/classification.h"
#include "zymdb_firmware.h"
#include "zymdb_pci.h"

using namespace zymdb;

namespace {

using Record = _ZYMDB_PCI_Firmware;

constexpr Column kFirmwareColumns[] = {
    ZYMDB_FIELD(Record, FirmwareName), ZYMDB_FIELD(Record, VersionString),
    ZYMDB_FIELD(Record, Description),  ZYMDB_FIELD(Record, ReleaseDate),
    ZYMDB_FIELD(Record, Manufacture),  ZYMDB_NUMBER_IN_TEXT("Classification", Record, Classification, 0),
    ZYMDB_FIELD(Record, SoftwareID),
};

constexpr uint32_t kPciHardware = ZYMDB_HARDWARE_PCI;

// The hardware that a function's components belong to.
struct Hardware {
  unsigned int id;
  unsigned char type;
};

// Callers' texts are cut where their field ends.
void terminate_texts(Record& record) {
  record.FirmwareName[sizeof record.FirmwareName - 1] = '\0';
  record.Manufacture[sizeof record.Manufacture - 1] = '\0';
  record.ReleaseDate[sizeof record.ReleaseDate - 1] = '\0';
  record.Description[sizeof record.Description - 1] = '\0';
  record.VersionString[sizeof record.VersionString - 1] = '\0';
  record.SoftwareID[sizeof record.SoftwareID - 1] = '\0';
}

// Of a component that is there already only its date and version change.
int refresh(Values& values, const Record& record, const char* filter) {
  values.put("ReleaseDate", record.ReleaseDate);
  values.put("VersionString", record.VersionString);
  return values.update("Firmwares", filter);
}

int insert(Values& values, const Record& record, const Hardware& hardware) {
  values.clear();
  values.put("FirmwareName", record.FirmwareName);
  values.put("Manufacture", record.Manufacture);
  values.put("ReleaseDate", record.ReleaseDate);
  values.put("Description", record.Description);
  values.put("Classification", int32_t{record.Classification});
  values.put("VersionString", record.VersionString);
  values.put("SoftwareID", record.SoftwareID);
  values.put("HardwareTypeId", int32_t{hardware.type});
  values.put("HardwareId", static_cast<int32_t>(hardware.id));
  ruvo_log::logInfo("%s: insert new firmware row, softerwareID %s classfication %x hwtype %x hwid %x",
                    "zymdb_update_adapter_firmware_list", record.SoftwareID, record.Classification,
                    hardware.type, hardware.id);
  return values.insert("Firmwares");
}

// Writes one component; one whose row cannot be looked up is left out.
int write(_zym_db_handle_t* handle, Values& values, Record& record, const Hardware& hardware) {
  values.clear();
  terminate_texts(record);
  const Filter<128> filter("HardwareTypeId=%d AND HardwareId=%d AND SoftwareID=\"%s\" AND Classification=%d",
                           hardware.type, static_cast<int>(hardware.id), record.SoftwareID,
                           record.Classification);
  const int64_t id = find_db_record(handle, "Firmwares", filter);
  if (id > 0) return refresh(values, record, filter);
  if (id == 0) return insert(values, record, hardware);
  ruvo_log::logErr("%s: query firmwares table failed, softerwareID %s classfication %x hwtype %x hwid %x",
                   "zymdb_update_adapter_firmware_list", record.SoftwareID, record.Classification,
                   hardware.type, hardware.id);
  return ZYM_DB_STATUS_OK;
}

}  // namespace

int zymdb_get_pci_firmware_list(unsigned int funKey, _ZYMDB_PCI_Firmware_List* out) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (out == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;

  *out = {};
  Hardware hardware{funKey, kPciHardware};
  // The lookup's own code is not told: an unknown function is a wrong argument here.
  if (zymdb_get_pci_hardwareidtype_by_funkey(funKey, &hardware.id, &hardware.type) != ZYM_DB_STATUS_OK)
    return ZYM_DB_STATUS_INVALID_PARAM;

  Query query(
      handle, "Firmwares", kFirmwareColumns,
      Filter<128>("HardwareTypeId=%d AND HardwareId=%d", hardware.type, static_cast<int>(hardware.id)));
  return list_rows(query, allocate_array<Record>, out->Count, out->Firmwares, [&](Record& record) {
    query.read_columns(kFirmwareColumns, &record);
    copy_text(record.ClassificationString, classification_text(record.Classification));
    return true;
  });
}

int zymdb_update_adapter_firmware_list(unsigned int pciKey, _ZYMDB_PCI_Firmware_List* in) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  _ZYMDB_PCI_FunKey_List keys{};
  int status = zymdb_get_pci_funkey_list(static_cast<int>(pciKey), &keys);
  const CallerArray<uint32_t> owner(keys.keys);
  if (status != ZYM_DB_STATUS_OK) return status;

  for (const uint32_t funkey : std::span(keys.keys, keys.count)) {
    Hardware hardware{funkey, 255};
    status = zymdb_get_pci_hardwareidtype_by_funkey(funkey, &hardware.id, &hardware.type);
    if (status != ZYM_DB_STATUS_OK) continue;
    for (Record& record : std::span(in->Firmwares, in->Count))
      if (const int failure = write(handle, values, record, hardware); failure != ZYM_DB_STATUS_OK)
        return failure;
  }
  return status;
}

int zymdb_insert_or_update_firmware_info(unsigned int hardwareId, const _ZYMDB_PCI_Firmware* rec) {
  _zym_db_handle_t* const handle = get_dmdb_handle();
  if (handle == nullptr) return ZYM_DB_STATUS_NO_DB;
  if (rec == nullptr) return ZYM_DB_STATUS_INVALID_PARAM;
  Values values(handle);
  if (!values) return ZYM_DB_STATUS_NO_MEMORY;

  values.clear();
  values.put("FirmwareName", rec->FirmwareName);
  values.put("VersionString", rec->VersionString);
  values.put("Description", rec->Description);
  values.put("ReleaseDate", rec->ReleaseDate);
  values.put("Classification", uint32_t{rec->Classification});
  values.put("Manufacture", rec->Manufacture);
  values.put("SoftwareID", rec->SoftwareID);
  values.put("HardwareId", uint32_t{hardwareId});
  values.put("HardwareTypeId", kPciHardware);

  // Hardware and classification are the row's key here: a second component of a class replaces the first.
  const Filter<64> where("HardwareId=%u and Classification=%u", hardwareId, rec->Classification);
  if (values.insert_or_update("Firmwares", where, nullptr) > 0) return ZYM_DB_STATUS_OK;
  log_to_system(kLogInformation, "%s: Failed to insert/update PCI FW info, where:%s\n\n",
                "zymdb_insert_or_update_firmware_info", where.text());
  return ZYM_DB_STATUS_ERROR;
}
