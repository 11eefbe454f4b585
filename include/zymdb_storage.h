/**
 * Storage drives: identity data that drives report, the records of drives, lists of drives by place and
 * controller, and the controllers and backplanes they hang on.
 *
 * The conventions at the top of zymdb_db.h hold. Where an operation checks a null argument before it looks
 * for the database, its list of statuses says so.
 */
#ifndef ZYMDB_STORAGE_H
#define ZYMDB_STORAGE_H

#include <stddef.h>
#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The drive record ---------------------------------------------------------------------------- */

/** Form-factor classes of drives. */
typedef enum _AimDiskFormFactor {
  ZYMDB_FORM_FACTOR_UNKNOWN = 0x00,     /**< not known */
  ZYMDB_FORM_FACTOR_DRIVE_BAY = 0x10,   /**< 2.5 and 3.5 inch drives, 7 mm drives */
  ZYMDB_FORM_FACTOR_ADD_IN_CARD = 0x20, /**< cards in a slot */
  ZYMDB_FORM_FACTOR_M2 = 0x30,          /**< M.2 modules */
  ZYMDB_FORM_FACTOR_EDSFF = 0x50        /**< EDSFF drives */
} _AimDiskFormFactor;

/**
 * A drive. Tables and operations fill different parts of it; what an operation does not mention it leaves
 * alone. Texts are empty and numbers 0 where nothing is known.
 *
 * Kinds of place, in `LocationId`, and the text of the place, in `Location`, which is the key of table
 * AimDisks: 1 "Slot N", 2 "Bay N", 3 "M.2 BayN", 4 "7MM BayN", with N from `BayNo`.
 *
 * Drive types, in `DriveTypeId`: 1 SATA on the board, 2 SAS, 3 NVMe in a slot or bay, 4 M.2 SATA, 5 M.2 NVMe,
 * 6 7 mm SATA, 7 7 mm NVMe.
 */
struct _ZYMDB_AimDisk {
  uint32_t PCIFuncKey;    /**< function key of the drive's controller */
  uint16_t SlotNo;        /**< PCI slot of the controller */
  uint8_t CtrlType;       /**< controller type; 0 unknown, 3 on-board Marvell */
  uint16_t BayNo;         /**< number of the slot or bay, as the text of the place shows it */
  uint8_t LocationId;     /**< kind of place, 1 to 4; 0: none of them */
  uint8_t DriveTypeId;    /**< drive type, 1 to 7 */
  uint8_t Presence;       /**< 1: present. Lists made from AimDisks leave it 0 */
  uint32_t FormFactor;    /**< an _AimDiskFormFactor */
  uint8_t HealthStatusId; /**< health from the sensors; 2 when no sensor tells */
  char Location[17];      /**< text of the place */
  char DisplayType[17];   /**< "SATA", "SAS", "NVMe", "EDSFF NVMe", "M.2 SATA", … or "Unknown" */
  char MediaType[17];     /**< "SSD" or "HDD" */
  uint16_t MediaValue;    /**< hard disks: their media type, 2 to 65534 (rotations per minute); otherwise 0 */
  char FruNo[33];         /**< number of the field-replaceable unit */
  char PartNo[33];        /**< part number */
  char SerialNo[33];      /**< serial number */
  char Model[65];         /**< model */
  char UUID[65];          /**< universally unique identifier */
  char Manufacture[17];   /**< the drive's maker */
  char FwVersion[17];     /**< firmware version */
  char Capacity[17];      /**< for example "1.92TB" or "480GB" */
  uint8_t SFlags;         /**< health status flags of the drive, as it reports them */
  uint8_t Warning;        /**< its critical warnings, one bit each; 0 none */
  uint8_t Temperature;    /**< degrees Celsius */
  uint8_t RemainLife;     /**< percent */
  uint16_t InfoMask;      /**< which of the four values above are valid; 0x0F all */
};
typedef struct _ZYMDB_AimDisk _ZYMDB_AimDisk;

/** Drives. */
struct _ZYMDB_AimDisk_List {
  uint32_t count;        /**< drives in `disks` */
  _ZYMDB_AimDisk* disks; /**< the caller frees it */
};
typedef struct _ZYMDB_AimDisk_List _ZYMDB_AimDisk_List;

/* ---- Identity data of drives --------------------------------------------------------------------- */

/**
 * Cleans a fixed-length text in place: ends it at the first control character (below 20h, or 7Fh), and at the
 * first space, unless that is the very first byte, that the end, another space or a control character
 * follows. Bytes from 80h on are kept. No NUL is written after a text that fills the field.
 *
 * @param buf  must not be null unless `len` is 0.
 * @param len  bytes of the field.
 */
void rm_invalid_chars(char* buf, unsigned int len);

/**
 * Decodes the vital product data that an NVMe drive's management interface returns: a vendor layout (bytes
 * 02h 08h 01h), or an IPMI FRU image (byte 0 is 01h or 02h).
 *
 * The vendor layout fills Model, PartNo, SerialNo, FruNo and Manufacture; the FRU image those of them that it
 * has, and Capacity from the first three records of its multi-record area, of which the last NVMe record
 * counts. PartNo is the model without its leading word: what follows the first space or else the last
 * underscore. In an FRU image the last character of manufacturer, serial number and FRU file id is dropped,
 * and positions in the product area wrap at 256. A field that reaches beyond `len` is filled up with NULs.
 * Checksums, type bits and end-of-list flags are not looked at.
 *
 * @param vpd  `len` bytes; no byte outside is read.
 * @param len  at least 256.
 * @param out  zero-filled by the caller. `BayNo` is the number by which log lines name the drive. After a
 *             failure it may hold what was decoded before.
 * @return 0. -1, checked in this order: `len` is below 256; byte 0 is neither 01h nor 02h (logged); an FRU
 *         image has no product area (logged). A decoded FRU image is logged too, as information.
 */
int parse_nvme_drive_vpd(const unsigned char* vpd, unsigned int len, _ZYMDB_AimDisk* out);

/**
 * Converts the manufacturing date of an FRU image: minutes since 1996-01-01 00:00 UTC, three bytes, least
 * significant first.
 *
 * @param minutes3  the three bytes; null leaves the outputs as they are.
 * @param year, month, day  the date in the controller's time zone; month and day count from 1.
 */
void get_manuf_date(const unsigned char* minutes3, int* year, int* month, int* day);

/**
 * Converts a date code, two digits of the week and two of the year, to a date such as "2016-01-04": noon UTC
 * of the week's first day, in the controller's time zone. Weeks begin on Mondays and are counted from
 * 1996-01-01 on, with 53 of them in 1998, 2004, 2009, 2015, 2020 and 2026.
 *
 * Years 96 to 99 are 1996 to 1999, years from 28 on are taken as 2027; nothing is later than week 47 of 2027,
 * the last that an FRU image can state. A week below 1 is the first, one above the year's last is the last.
 * Four bytes FFh, an erased field, are "1996-01-01".
 *
 * @param code     the code. At most its four digits are read; a missing number is 0. Null does nothing.
 * @param out      the date, cut to `out_len` bytes with its NUL. Null does nothing.
 * @param out_len  the size of `out` in bytes.
 */
void vpd_manuf_date_to_ymd(const char* code, char* out, size_t out_len);

/**
 * The maker of a drive by the first characters of its model.
 *
 * @param model  the model, NUL-terminated.
 * @return a constant text, which is not freed; "" when the model is of no known maker, null for null.
 */
const char* driveModel2Manufacture(const char* model);

/**
 * Skips the maker's name in front of a model, and with it a short series name that follows.
 *
 * The name is the first word, ended by a space or an underscore: of at most 8 characters, and any maker's
 * name or its beginning, in upper or lower case. A second word of at most 7 characters is skipped along. A
 * model that begins with no such word is answered without its leading spaces.
 *
 * @param model  the model, NUL-terminated.
 * @return a position in `model`, which is not changed; null for null.
 */
char* trim_drive_model(char* model);

/* ---- Records of drives --------------------------------------------------------------------------- */

/**
 * The function key of the NVMe controller in a slot.
 *
 * @param location  kind of place, as in column Location of PCIs.
 * @param slot_no   the slot number within the location.
 * @param funkey    untouched unless a function was found; a part of its address that cannot be read is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `funkey` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query; 0 when it gives no result
 *         - ZYM_DB_STATUS_NO_DB (6): the slot has no such function
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_nvme_drv_funkey(int location, int slot_no, unsigned int* funkey);

/**
 * Tells whether an NVMe drive is known in a slot or bay. Callers compare with 1: errors are not 0.
 *
 * @param location_id  1 slot, 2 bay.
 * @param bay_no       number of the slot or bay.
 * @return 1 when AimDisks has the drive; 0 when not, or when the query fails; ZYM_DB_STATUS_INVALID_PARAM (3)
 *         for another kind of place; then ZYM_DB_STATUS_NO_DB (6) without a database.
 */
int zymdb_nvme_aim_disk_exist(int location_id, int bay_no);

/**
 * Writes an NVMe drive in a slot or bay to AimDisks.
 *
 * A drive that is there with the same serial number gets only its FwVersion, when that is not empty and
 * another. Any other drive in that place is replaced: all columns are written from the fields of their names,
 * with Presence 1 and media type 1, but a CtrlType that is stored and not 0 stays. Otherwise a row is
 * inserted, also when the place could not be looked up.
 *
 * @param disk  the drive, its place in `LocationId` and `BayNo`.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `disk` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `LocationId` is neither 1 nor 2
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's insert or update
 */
int zymdb_add_update_nvme_aim_disk(const _ZYMDB_AimDisk* disk);

/**
 * Writes the firmware version of an NVMe drive to NVMeDrives.
 *
 * @param location    kind of place, 1 to 4.
 * @param slot_no     the drive's bay number.
 * @param fw_version  must not be null.
 * @return ZYM_DB_STATUS_NO_DB (6) without a database, ZYM_DB_STATUS_NO_MEMORY (4), or the status of the
 *         client's update; 0 also when there is no such drive.
 */
int zymdb_update_nvme_disk_firmware_version(int location, int slot_no, const char* fw_version);

/**
 * Writes SFlags, Warning, Temperature, RemainLife and InfoMask of a drive to AimDisks.
 *
 * Only when one of the flags, the warnings, the remaining life or the mask has changed, or when the
 * temperature is more than 3 degrees from the stored one: a temperature that moves within 3 degrees of it
 * stays stale, so that it does not rewrite the table.
 *
 * @param disk  the drive, its place in `LocationId` and `BayNo`.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `disk` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `LocationId` is not 1 to 4
 *         - the status of the client's update; 0 also when nothing was written
 */
int zymdb_update_aim_disk_smart_info(const _ZYMDB_AimDisk* disk);

/**
 * Writes the controller type of a drive to AimDisks, when it is another.
 *
 * @param disk  the drive, its place in `LocationId` and `BayNo`.
 * @return as zymdb_update_aim_disk_smart_info.
 */
int zymdb_update_aim_disk_ctrl_type(const _ZYMDB_AimDisk* disk);

/**
 * Writes whether a drive is present to AimDisks, when that has changed.
 *
 * @param location_id  kind of place; not checked.
 * @param bay_no       number of the slot or bay.
 * @param presence     1 present, 0 not.
 * @return ZYM_DB_STATUS_NO_DB (6) without a database, ZYM_DB_STATUS_NO_MEMORY (4), or the status of the
 *         client's update.
 */
int zymdb_update_aim_disk_presence(int location_id, int bay_no, int presence);

/**
 * Writes Model, SerialNo, PartNo, FruNo, Manufacture and FwVersion of a drive to AimDisks, every time.
 *
 * @param disk  addressed by `LocationId`, which is not checked, and `BayNo`.
 * @return ZYM_DB_STATUS_INVALID_PARAM (3) for null, ZYM_DB_STATUS_NO_DB (6) without a database,
 *         ZYM_DB_STATUS_NO_MEMORY (4), or the status of the client's update.
 */
int zymdb_update_aim_disk_vpd_info(const _ZYMDB_AimDisk* disk);

/* ---- Controllers and backplanes ------------------------------------------------------------------ */

/**
 * The type of an on-board Marvell controller, from the property database.
 *
 * @param ctrl_type   must not be null. The type, 0 when no property states it; untouched when the property
 *                    database cannot be opened.
 * @param ctrl_index  0 for controller 0, anything else for controller 1.
 * @return ZYM_DB_STATUS_NO_DB (6): the property database cannot be opened; otherwise the status of the
 *         client's query.
 */
int zymdb_get_mvl_ctrl_type(unsigned char* ctrl_type, int ctrl_index);

/**
 * The slot of the first PCI function with these identifiers.
 *
 * @param device_id     DeviceId of the function.
 * @param subdevice_id  SubDeviceId of the function.
 * @param slot_no       255 when the slot number cannot be read; untouched unless a function was found.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `slot_no` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query; 0 when it gives no result
 *         - the step's code when it yields no row: ZYM_DB_STATUS_DONE (10) when there is no such function
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_ctrl_slot(int device_id, int subdevice_id, unsigned char* slot_no);

/**
 * The slots of the server's own Marvell controllers. Those without a slot (255 or more) are left out.
 *
 * @param slots  room for `max` slots.
 * @param max    elements of `slots`.
 * @param count  how many were stored: at most `max`, and the low 8 bits of that number; 0 after a failure.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `slots` or `count` is null, or there is no database (both are
 *           untouched)
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_marvell_ctrl_slots(unsigned char* slots, unsigned int max, unsigned char* count);

/**
 * How many drives the backplanes that are present can hold and do hold, from the property database. Each
 * backplane's numbers are logged.
 *
 * @param max_drives, installed_drives  must not be null. The sums, their low 8 bits; untouched when the
 *                    property database cannot be opened. A number that is missing counts as 0.
 * @return ZYM_DB_STATUS_NO_DB (6): the property database cannot be opened; otherwise the status of the
 *         client's query for the backplanes.
 */
int zymdb_get_bp_drive_count(unsigned char* max_drives, unsigned char* installed_drives);

/* ---- The two list builders ----------------------------------------------------------------------- */

/**
 * Lists NVMe drives as their management interface reported them: rows of NVMeDrives.
 *
 * Columns fill the fields of their names, with these exceptions: Location fills `LocationId`, SlotNo `BayNo`,
 * CtrlSlot `SlotNo`, ModelName `Model`, Manufacturer `Manufacture`, SupplierSN `SerialNo` and FwVer
 * `FwVersion`; Capacity is a number of bytes, shown as "%.2lfTB" from 10^12 on and as "%.0lfGB" below.
 * `Presence` is 1, `InfoMask` 0x0F, the media type "SSD". The drive type follows from the place: 5 in an M.2
 * bay, 7 in a 7 mm bay, otherwise 3. A drive in an M.2 or 7 mm bay whose controller's slot is that of an
 * on-board Marvell controller gets that one's function key, and controller type 3. A form factor of the EDSFF
 * family gives the display type "EDSFF NVMe", whatever the drive type.
 *
 * Health is that of the drive's sensor slot in SensorSlotMap, or 2: bays are keyed by their number, M.2 bays
 * by number + 128, 7 mm bays by number + 192. A drive in a slot with health 2 and a warning has health 1.
 *
 * @param list   emptied once the arguments are accepted, filled on success.
 * @param where  a filter on NVMeDrives; null lists all.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database, or the query fails or gives no result
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0): also without drives
 */
int zymdb_get_nvme_disk_list_from_mi_filter(_ZYMDB_AimDisk_List* list, const char* where);

/**
 * Lists drives from AimDisks. Each is logged to the system log.
 *
 * Columns fill the fields of their names; of `BayNo` the low 8 bits, 255 when unreadable. `Presence` is not
 * set. MediaTypeId 1 is "SSD", any other "HDD" with that number as `MediaValue`. The function key and
 * controller type of M.2 and 7 mm drives (types 4 to 7), and the health of all, are found as in
 * zymdb_get_nvme_disk_list_from_mi_filter, without its rule for warnings. NVMe drives in bays that the
 * property database calls EDSFF are of that form factor.
 *
 * The backplanes' bays are read from the property database once per process, on first use: one that is added
 * later is not seen.
 *
 * @param list   emptied once the arguments are accepted, filled on success.
 * @param where  a filter on AimDisks; null lists all.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query; 0, with an empty list, when it gives no result
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0): also without drives
 */
int zymdb_get_disk_list_with_filter(_ZYMDB_AimDisk_List* list, const char* where);

/* ---- Lists of drives ----------------------------------------------------------------------------- */

/**
 * Lists the drives that are present: zymdb_get_disk_list_with_filter for Presence 1.
 *
 * @param list  here and in the lists below empty on entry; empty after a failure.
 * @return as zymdb_get_disk_list_with_filter.
 */
int zymdb_get_disk_list(_ZYMDB_AimDisk_List* list);

/**
 * Lists the SATA drives on the board that are present, as zymdb_get_disk_list does all of them.
 *
 * @param list  as there.
 * @return as zymdb_get_disk_list.
 */
int zymdb_get_onboard_sata_disk_list(_ZYMDB_AimDisk_List* list);

/**
 * Lists the M.2 drives: those that the management interface reports, or else those of AimDisks (types 4 and
 * 5).
 *
 * @param list  as in zymdb_get_disk_list.
 * @return 0 when the management interface reports a drive, otherwise as in zymdb_get_disk_list_with_filter.
 */
int zymdb_get_m2_disk_list(_ZYMDB_AimDisk_List* list);

/**
 * Lists the 7 mm drives. With a Marvell controller 1 of type 4: those that the management interface reports
 * (its failure is logged), or else those of AimDisks that are present and of type 7; of type 2: those that
 * are present and of type 6; without either: whatever is in a 7 mm bay.
 *
 * @param list  as in zymdb_get_disk_list.
 * @return any status but 0 of zymdb_get_mvl_ctrl_type; 0 when the management interface reports a drive;
 *         otherwise as in zymdb_get_disk_list_with_filter.
 */
int zymdb_get_7mm_disk_list(_ZYMDB_AimDisk_List* list);

/**
 * Lists the drives of the controller in a slot: those that the management interface reports, or else those of
 * AimDisks in one kind of place.
 *
 * @param ctrl_slot  PCI slot of the controller.
 * @param list       as in zymdb_get_disk_list.
 * @param kind       kind of place in AimDisks; above 4, M.2 and 7 mm bays.
 * @return 0 when the management interface reports a drive, otherwise as in zymdb_get_disk_list_with_filter.
 */
int zymdb_get_ctrl_aim_disk_list(int ctrl_slot, _ZYMDB_AimDisk_List* list, int kind);

/**
 * Lists all drives: the M.2 drives, the 7 mm drives, the U.2 and add-in-card NVMe drives, the SATA drives on
 * the board, in this order. A list that fails is logged and left out; a drive in two of them is listed twice.
 *
 * @param list  null does nothing; empty without memory.
 */
void zymdb_get_merged_disk_list(_ZYMDB_AimDisk_List* list);

/**
 * Lists the drives behind one PCI function, the first 64 of zymdb_get_merged_disk_list.
 *
 * @param funkey  function key of the drives' controller.
 * @param list    emptied, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - ZYM_DB_STATUS_NOT_FOUND (11): there is none, or there is no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_disk_list_funkey(unsigned int funkey, _ZYMDB_AimDisk_List* list);

/**
 * Reads the NVMe drive in a slot or bay.
 *
 * @param location_id  1 slot, 2 bay.
 * @param bay_no       number of the slot or bay.
 * @param disk         untouched unless the status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `disk` is null, another kind of place, or no drive is found
 *           there, for whatever reason
 *         - ZYM_DB_STATUS_NO_DB (6): more than one drive is found there (logged)
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_nvme_aim_disk(int location_id, int bay_no, _ZYMDB_AimDisk* disk);

/**
 * Lists the NVMe drives without a RAID controller that sit in U.2 bays or on add-in cards.
 *
 * First come the drives that the management interface reports, then those of AimDisks, each in the order of
 * its table. A card that both report is listed as the management interface reports it; bays are not compared.
 * Drives of AimDisks in bays count only when the property database calls the bay one for NVMe drives. A drive
 * whose controller function is found in PCIs gets that function key, any other keeps what its source says.
 *
 * @param list  emptied, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_OK (0): also without drives, and when a source fails, which is logged
 */
int zymdb_get_u2_aic_nvme_disk_list(_ZYMDB_AimDisk_List* list);

#ifdef __cplusplus
}
#endif

#endif
