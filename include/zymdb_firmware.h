/**
 * Firmware of the host's devices: adapter components, PLDM devices, embedded devices, DPUs and retimers.
 *
 * The conventions at the top of zymdb_db.h hold.
 */
#ifndef ZYMDB_FIRMWARE_H
#define ZYMDB_FIRMWARE_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Components of adapters ---------------------------------------------------------------------- */

/**
 * A firmware or software component of an adapter: a row of Firmwares, each field from the column of its name.
 * Unreadable texts are empty.
 */
struct _ZYMDB_PCI_Firmware {
  char FirmwareName[33];         /**< the component's name */
  char VersionString[33];        /**< its version */
  char Description[129];         /**< what it is */
  char ReleaseDate[17];          /**< its date, as the device writes dates */
  uint16_t Classification;       /**< classification code, its low 16 bits; 0 when unreadable */
  char ClassificationString[65]; /**< text of Classification; filled by the list operation, never stored */
  char Manufacture[33];          /**< its maker */
  char SoftwareID[17];           /**< identifies the component among those of its hardware */
};
typedef struct _ZYMDB_PCI_Firmware _ZYMDB_PCI_Firmware;

/** Components. */
struct _ZYMDB_PCI_Firmware_List {
  uint32_t Count;                 /**< components in `Firmwares` */
  _ZYMDB_PCI_Firmware* Firmwares; /**< the caller frees what the library hands out */
};
typedef struct _ZYMDB_PCI_Firmware_List _ZYMDB_PCI_Firmware_List;

/**
 * Lists the components of one PCI function.
 *
 * @param funKey  function key of the function.
 * @param out     emptied once the arguments are accepted, filled on success: without components `Firmwares`
 *                may be a zero-length array.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `out` is null, or the function's hardware id could not be looked
 * up
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_firmware_list(unsigned int funKey, _ZYMDB_PCI_Firmware_List* out);

/**
 * Writes an adapter's components to each of its functions. A component that is there already (same hardware,
 * software id and classification) gets ReleaseDate and VersionString anew, any other is inserted.
 *
 * Nothing is rolled back: what was written before a failure stays.
 *
 * @param pciKey  PCI key of the adapter. 32 bits; from 2^31 on it matches nothing.
 * @param in      must not be null. The last byte of each of its records' text fields is set to NUL.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of zymdb_get_pci_funkey_list; 0 for an adapter without functions
 *         - the status of the first update or insert that failed
 *         - the status of the hardware id lookup of the last function. A function whose lookup fails, and a
 *           component whose row could not be looked up (logged), are left out
 */
int zymdb_update_adapter_firmware_list(unsigned int pciKey, _ZYMDB_PCI_Firmware_List* in);

/**
 * Writes one component of one piece of hardware, in place of the one of the same hardware id and
 * classification where there is one. The hardware type stored is 3.
 *
 * @param hardwareId  hardware id of what the component runs on.
 * @param rec         the component; `ClassificationString` is not stored.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `rec` is null
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_ERROR (1): it could not be written; told to the system log
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_insert_or_update_firmware_info(unsigned int hardwareId, const _ZYMDB_PCI_Firmware* rec);

/** Update states of a PLDM component: Status. Other values are the updater's own. */
typedef enum _ZYMDB_PLDM_Status {
  ZYMDB_PLDM_NOT_PENDING = 0,   /**< nothing waits for an activation */
  ZYMDB_PLDM_UPDATE_PENDING = 2 /**< an update is staged for the next activation */
} _ZYMDB_PLDM_Status;

/* ---- PLDM devices -------------------------------------------------------------------------------- */

/**
 * A firmware component of a PLDM device: a row of PldmDeviceFirmware, each field from the column of its name.
 * Unreadable texts are empty, unreadable numbers 0 where no other default is stated.
 */
struct _ZYMDB_PLDM_Firmware {
  char DeviceName[129];          /**< the device's name */
  uint32_t DeviceType;           /**< device type code; 23 when unreadable */
  uint32_t PCIKey;               /**< Location << 16 | SlotNo, not the PCI key of other tables */
  uint32_t PCIFuncKey;           /**< the device's function key; 0 where it is not known */
  uint8_t Location;              /**< kind of place, a _ZYMDB_Location */
  uint16_t SlotNo;               /**< slot number within the location */
  char Manufacture[33];          /**< the device's maker */
  char SoftwareID[9];            /**< identifies the component */
  char VersionString[33];        /**< installed */
  char PendingVersionString[33]; /**< staged for the next activation */
  char PkgVersionString[33];     /**< version of the package that the update came in */
  char ReleaseDate[17];          /**< date of what is installed */
  char PendingReleaseDate[17];   /**< date of what is staged */
  uint8_t UpdateSupport;         /**< 0: the device cannot be updated */
  uint8_t Updated;               /**< not 0: an update was applied */
  uint16_t UpdateMethod;         /**< how the device is updated; the updater's code */
  uint8_t UpdateAuxInfo;         /**< the updater's own */
  uint8_t UpdateErrCode;         /**< 0: the update succeeded; else, with Updated, it failed */
  char UpdateErrString[129];     /**< what the last update failed with */
  uint32_t Status;               /**< a _ZYMDB_PLDM_Status */
};
typedef struct _ZYMDB_PLDM_Firmware _ZYMDB_PLDM_Firmware;

/** PLDM components. */
struct _ZYMDB_PLDM_Firmware_List {
  uint32_t Count;                  /**< components in `Firmwares` */
  _ZYMDB_PLDM_Firmware* Firmwares; /**< the caller frees it */
};
typedef struct _ZYMDB_PLDM_Firmware_List _ZYMDB_PLDM_Firmware_List;

/**
 * Lists all PLDM components.
 *
 * @param out  emptied once the arguments are accepted, filled on success: without components `Firmwares` may
 * be a zero-length array.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `out` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pldm_firmware_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Lists those with a pending update (Status 2), as zymdb_get_pldm_firmware_list does.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_pldm_firmware_pending_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Lists those to which an update was applied (Updated is not 0), as zymdb_get_pldm_firmware_list does.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_pldm_firmware_updated_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Lists those whose update failed, as zymdb_get_pldm_firmware_list does: an update was applied (Updated is
 * not 0) and left an error code (UpdateErrCode is not 0). An error code without an applied update is no
 * failed update, and a column that is NULL counts in neither list.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_pldm_firmware_update_failure_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Lists those whose update succeeded (Updated is not 0, UpdateErrCode is 0), as zymdb_get_pldm_firmware_list
 * does.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_pldm_firmware_update_success_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Lists the Marvell storage controllers (devices 9230 and 2241) on the server maker's own boards, as
 * zymdb_get_pldm_firmware_list does. The boards' subsystem vendor id is a build option.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_pldm_firmware_marvell_ctrl_list(_ZYMDB_PLDM_Firmware_List* out);

/**
 * Reads the component of a slot. Of two, the second is taken when it alone supports updates, else the first.
 *
 * @param location         kind of place, a _ZYMDB_Location.
 * @param slotNo           the slot number within the location.
 * @param out              untouched unless the status is 0.
 * @param busNo, deviceNo  narrow the search to that PCI device; a negative one of them leaves both out.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `out` is null
 *         - the statuses of zymdb_get_pldm_firmware_list
 *         - ZYM_DB_STATUS_NOT_FOUND (11): none, or more than two
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pldm_firmware(int location, int slotNo, _ZYMDB_PLDM_Firmware* out, int busNo, int deviceNo);

/**
 * Writes versions and update state of the component of a slot and of the record's software id. Creates no
 * row.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slotNo    the slot number within the location.
 * @param rec       the last byte of each text that is written is set to NUL.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `rec` is null, or of another slot than the arguments say
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's update, logged when not 0
 */
int zymdb_update_pldm_firmware(unsigned int location, unsigned int slotNo, _ZYMDB_PLDM_Firmware* rec);

/**
 * Ends every pending state: Status 2 becomes 0.
 *
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's update, logged when not 0
 */
int zymdb_clear_all_pldm_firmware_pending_status(void);

/**
 * Deletes all components of one device type.
 *
 * @param deviceType  device type code.
 * @return the status of delete_db_record: ZYM_DB_STATUS_INVALID_PARAM (3) without a database.
 */
int zymdb_clear_pldm_firmware_by_type(int deviceType);

/**
 * Records a discovered device's component: inserts the row of its device type, slot and location, or
 * refreshes it when its PCI key or software id has changed. Pending versions and update results are not
 * touched.
 *
 * @param vendorId     the device's PCI vendor id, stored and never read back, as the three that follow.
 * @param deviceId     its PCI device id.
 * @param subVendorId  its subsystem's vendor id.
 * @param subDeviceId  its subsystem's device id.
 * @param rec          its PCIKey is not used: the key stored is Location << 16 | SlotNo.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `rec` is null
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_OK (0), also when it could not be written: only the system log tells
 */
int zymdb_insert_or_update_pldm_firmware(unsigned int vendorId, unsigned int deviceId,
                                         unsigned int subVendorId, unsigned int subDeviceId,
                                         const _ZYMDB_PLDM_Firmware* rec);

/* ---- Embedded devices ---------------------------------------------------------------------------- */

/**
 * The firmware of a device on the system board: a row of EmbeddedDeviceFirmware, each field from the column
 * of its name. Unreadable texts are empty, unreadable numbers 0.
 */
struct _ZYMDB_Embedded_Firmware {
  char DeviceName[129]; /**< the device's name */
  uint8_t DeviceIndex;  /**< tells devices of the same software id apart */
  uint8_t StructRev;    /**< revision of the structure that states what follows */
  uint8_t Version;      /**< version */
  char SoftwareID[17];  /**< identifies the firmware */
  uint16_t Class;       /**< class code */
  uint8_t Category;     /**< category code */
  uint8_t SubCategory;  /**< code within the category */
  uint8_t Checksum;     /**< checksum of the image */
};
typedef struct _ZYMDB_Embedded_Firmware _ZYMDB_Embedded_Firmware;

/** Firmware of embedded devices. */
struct _ZYMDB_Embedded_Firmware_List {
  uint32_t Count;                      /**< firmwares in `Firmwares` */
  _ZYMDB_Embedded_Firmware* Firmwares; /**< the caller frees it */
};
typedef struct _ZYMDB_Embedded_Firmware_List _ZYMDB_Embedded_Firmware_List;

/**
 * Lists the firmware of all embedded devices, as zymdb_get_pldm_firmware_list does components.
 *
 * @param out  as there.
 * @return as zymdb_get_pldm_firmware_list.
 */
int zymdb_get_embedded_firmware_list(_ZYMDB_Embedded_Firmware_List* out);

/**
 * Inserts the firmware of an embedded device, or refreshes the row of its software id and device index when a
 * value differs. A row that could not be looked up counts as missing.
 *
 * @param rec  the firmware; its texts are not escaped.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `rec` is null
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's insert or update
 */
int zymdb_insert_or_update_embedded_firmware_info(const _ZYMDB_Embedded_Firmware* rec);

/**
 * Deletes the firmware of all embedded devices.
 *
 * @return ZYM_DB_STATUS_NO_DB (6) without a database, else the status of the client's delete.
 */
int zymdb_clear_all_embedded_firmware_info(void);

/* ---- Data processing units ----------------------------------------------------------------------- */

/** An event of a DPU: a row of DPUEvents, each field from the column of its name. */
struct _ZYMDB_DPU_Event {
  uint32_t Id;        /**< "_id"; not read when an event is appended */
  uint32_t Timestamp; /**< as the caller counts time */
  char GenID[32];     /**< who generated the event */
  char Message[256];  /**< what happened */
};
typedef struct _ZYMDB_DPU_Event _ZYMDB_DPU_Event;

/** Events. */
struct _ZYMDB_DPU_Event_List {
  uint32_t Count;           /**< rows found; events that could not be read leave zeroed entries at the end */
  _ZYMDB_DPU_Event* Events; /**< the caller frees it */
};
typedef struct _ZYMDB_DPU_Event_List _ZYMDB_DPU_Event_List;

/**
 * Records the UEFI version of the DPU in a slot: as a component of each of its functions, and in its PLDM
 * row.
 *
 * @param slotNo   number of the slot.
 * @param version  cut to 31 characters; null for none.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NOT_FOUND (11): no database, or no DPU in the slot
 *         - a status of reading the PLDM rows
 *         - ZYM_DB_STATUS_OK (0): the DPU has no PLDM row
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): it has several, and none of device type 15
 *         - the status of zymdb_insert_or_update_pldm_firmware
 *         A component that could not be written ends their writing and is told to the system log only.
 */
int zymdb_update_dpu_uefi_version(unsigned int slotNo, const char* version);

/**
 * Reads the UEFI version of the DPU in a slot.
 *
 * @param slotNo  number of the slot.
 * @param buf     at most `size` - 1 bytes of it are used, the NUL included. Untouched without a version.
 * @param size    the size of `buf` in bytes.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database, or `buf` is null
 *         - ZYM_DB_STATUS_NOT_FOUND (11): no DPU in the slot, or no version of it; told to the system log
 *         - the status of the read; 0 when it succeeded
 */
int zymdb_get_dpu_uefi_version(unsigned int slotNo, char* buf, unsigned int size);

/**
 * Appends an event to the log of a slot's DPU; at 256 events the oldest makes room.
 *
 * @param slot    1 or more.
 * @param event   texts that fill their field need no NUL.
 * @param nextId  on success the largest id that the log held before, plus 1; untouched otherwise. May be
 * null.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `slot` is below 1, or `event` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of counting the events: of the query, of the step, or of a read
 *         - a status of deleting the oldest event, logged
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's insert
 */
int dpu_insert_log(int slot, const _ZYMDB_DPU_Event* event, uint32_t* nextId);

/**
 * Lists the events of a slot's DPU.
 *
 * @param slot  1 or more.
 * @param out   filled on success, empty after a failed query and one without a result. After a failed step it
 * holds what was read, and its array is still the caller's to free.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `slot` is below 1, or `out` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int dpu_get_log_by_slot(int slot, _ZYMDB_DPU_Event_List* out);

/**
 * Deletes the events of a slot's DPU.
 *
 * @param slot  1 or more.
 * @return ZYM_DB_STATUS_INVALID_PARAM (3) for a `slot` below 1; ZYM_DB_STATUS_NO_DB (6) without a database;
 * else the status of the client's delete.
 */
int dpu_clear_logs_by_slot(int slot);

/* ---- Retimers ------------------------------------------------------------------------------------ */

/** A firmware update request, passed on to the retimer service as it is. */
struct _ZYMDB_Retimer_Update_Req {
  uint8_t Data[128]; /**< request block */
  uint32_t Param1;   /**< first parameter */
  uint32_t Param2;   /**< second parameter */
  uint8_t Byte1;     /**< first byte behind the parameters */
  uint8_t Byte2;     /**< second byte */
  uint8_t Byte3;     /**< third byte */
};
typedef struct _ZYMDB_Retimer_Update_Req _ZYMDB_Retimer_Update_Req;

/** How far a retimer's update is, as the retimer service counts. */
struct _ZYMDB_Retimer_Progress {
  uint32_t Stage;    /**< stage of the update */
  uint32_t Progress; /**< progress within it */
};
typedef struct _ZYMDB_Retimer_Progress _ZYMDB_Retimer_Progress;

/**
 * Asks the retimer service ("/tmp/rtcfgproxy.sock") for a firmware update and waits for its verdict, for up
 * to an hour. Each read of the reply, and the write of the request as far as signals interrupt it, has five
 * seconds, however many signals arrive. From the first call on the process ignores SIGPIPE. Needs no
 * database. Failures are told to the system log.
 *
 * @param req  the request; its meaning is between the caller and the service.
 * @return the service's result, which may be any number; or, checked in this order:
 *         - -1: `req` is null (not logged)
 *         - -2: no socket
 *         - -3: the service could not be reached
 *         - -5: the reply could not be waited for, the process having too many open descriptors; nothing was
 *           sent
 *         - -4: the request could not be written whole
 *         - -5: waiting for the reply failed
 *         - -6: no reply within 3,600 seconds
 *         - -1: the reply could not be read
 */
int32_t retimer_update_fw(const _ZYMDB_Retimer_Update_Req* req);

/**
 * Reads the progress of a retimer's update, which the service keeps in "/tmp/.rt_upd_state". Needs no
 * database.
 *
 * @param slotNo  number of the slot; above 255 it never matches.
 * @param out     untouched unless the result is 0.
 * @return 0 when the file tells of `slotNo`; -1 when `out` is null, when the file cannot be read (told to the
 *         system log; a pipe in its place is not waited for), or when it tells of another slot.
 */
int32_t retimer_get_fw_update_progress(uint32_t slotNo, _ZYMDB_Retimer_Progress* out);

#ifdef __cplusplus
}
#endif

#endif
