/**
 * PCI devices of the host: functions, adapters, their health and their sideband addresses.
 *
 * The conventions at the top of zymdb_db.h hold; its convention 6 explains the keys. A slot address is a
 * location code (a _ZYMDB_Location: on the board or in a slot) and the slot number within that location.
 */
#ifndef ZYMDB_PCI_H
#define ZYMDB_PCI_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/** PCI vendor ids of the devices that the library treats in a way of their own. */
typedef enum _ZYMDB_PCI_Vendor {
  ZYMDB_VENDOR_WITHOUT_SETTINGS = 0x1000, /**< its adapters have no settings to count, whatever is stored */
  ZYMDB_VENDOR_DPU = 0x15B3,              /**< maker of the data processing units */
  ZYMDB_VENDOR_MARVELL = 0x1B4B           /**< maker of the board's own storage controllers */
} _ZYMDB_PCI_Vendor;

/** How the adapter of a function is managed: AIMSupported. Other values count as not managed. */
typedef enum _ZYMDB_AIMSupport {
  ZYMDB_AIM_NONE = 0,    /**< not managed out of band */
  ZYMDB_AIM_MANAGED = 1, /**< managed out of band, and written so by a collector */
  ZYMDB_AIM_MERGED = 3   /**< known from configuration data, merged by zymdb_merge_aim_ucm_pfa */
} _ZYMDB_AIMSupport;

/* ---- Keys ---------------------------------------------------------------------------------------- */

/** Function keys. */
struct _ZYMDB_PCI_FunKey_List {
  uint32_t count; /**< keys stored in `keys` */
  uint32_t* keys; /**< the caller frees it; null when no array was allocated */
};
typedef struct _ZYMDB_PCI_FunKey_List _ZYMDB_PCI_FunKey_List;

/** PCI keys. */
struct _ZYMDB_PCI_Key_List {
  uint32_t count; /**< keys stored in `keys` */
  uint32_t* keys; /**< the caller clears it before the call and frees it afterwards */
};
typedef struct _ZYMDB_PCI_Key_List _ZYMDB_PCI_Key_List;

/**
 * Lists the distinct PCI keys (DevKey) of the PCI functions.
 *
 * @param list    `count` is set to 0 once the arguments are accepted; `keys` is written only when there are
 *                keys, so the caller clears it first. A key that cannot be read is listed as 0.
 * @param filter  on the columns of PCIs; null for all functions. Statement and filter share 160 bytes, which
 *                leaves 112 characters for the filter. A longer one cuts the statement's end, and with it
 * what makes the keys distinct, or its own: the statement then fails, or lists other keys.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0): also when there are no functions, when no array could be allocated (count
 *           0), and when stepping fails on the way (what was read stays listed)
 */
int zymdb_get_pci_keys(_ZYMDB_PCI_Key_List* list, const char* filter);

/**
 * Lists the PCI keys of the data processing units: zymdb_get_pci_keys for vendor 15B3, device A2D6.
 *
 * @param list  as there.
 * @return as zymdb_get_pci_keys.
 */
int zymdb_get_dpu_keys(_ZYMDB_PCI_Key_List* list);

#ifdef __cplusplus
} /* extern "C" */

/**
 * Lists the function keys (FunKey) of the PCI functions that match a filter. Unreadable keys are left out.
 *
 * @param filter  on the columns of PCIs; required.
 * @param list    emptied once the arguments are accepted, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database, or `filter` is null
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE; the list is empty
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_funkey_list_by_filter(char* filter, _ZYMDB_PCI_FunKey_List* list);

/**
 * Reads the hardware id and hardware type of a function.
 *
 * @param funkey         function key of the function.
 * @param hardware_id    HardwareId; 0 when unreadable. Untouched when there is no such function.
 * @param hardware_type  HardwareTypeId, its low 8 bits; 0 when unreadable. Untouched likewise.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): an output is null
 *         - a status of the client's query
 *         - the step's code: ZYM_DB_STATUS_DONE (10) for an unknown function
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_hardwareidtype_by_funkey(unsigned int funkey, unsigned int* hardware_id,
                                           unsigned char* hardware_type);

extern "C" {
#endif

/**
 * Lists the function keys of one slot: zymdb_get_pci_funkey_list_by_filter for Location and SlotNo.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slot      the slot number within the location.
 * @param list      as there.
 * @return as zymdb_get_pci_funkey_list_by_filter.
 */
int zymdb_get_pci_funkey_list_by_slot(int location, int slot, _ZYMDB_PCI_FunKey_List* list);

/**
 * Lists the function keys of one device, as its adapter's out-of-band type decides: for the types 1, 2 and 3
 * the distinct function keys of its adapter rows; for any other only the first of them, and only when PCIs
 * has it under the same device.
 *
 * @param pci_key  PCI key of the device.
 * @param list     emptied once the arguments are accepted, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query for the adapter
 *         - the step's code: ZYM_DB_STATUS_DONE (10) for a device without adapter rows
 *         - the statuses of reading the first key and the type, joined by OR
 *         - a status of the client's query for the function
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE; the list is empty
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_funkey_list(int pci_key, _ZYMDB_PCI_FunKey_List* list);

/**
 * Reads the type code of a function (FunType of PCIs).
 *
 * @param funkey  function key of the function.
 * @param type    preset to 23 before the query.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `type` is null
 *         - a status of the client's query
 *         - the step's code: ZYM_DB_STATUS_DONE (10) for an unknown function
 *         - the status of the read; 0 when it succeeded
 */
int zymdb_get_pci_function_type(unsigned int funkey, unsigned int* type);

/**
 * Reads how the function's adapter is managed out of band (AIMSupported of PCIAdapter).
 *
 * @param funkey    function key of the function.
 * @param oob_type  preset to 0 before the query.
 * @return as zymdb_get_pci_function_type; ZYM_DB_STATUS_INVALID_PARAM (3) when `oob_type` is null.
 */
int zymdb_get_pci_function_oob_type(unsigned int funkey, unsigned int* oob_type);

/**
 * Reads the card name of the function's adapter (CardName of PCIAdapter).
 *
 * @param funkey  function key of the function.
 * @param name    at most `size` bytes with the NUL. Untouched without a row; emptied before the text is
 *                read.
 * @param size    the size of `name`, 1 or more.
 * @return as zymdb_get_pci_function_type; ZYM_DB_STATUS_INVALID_PARAM (3) when `name` is null or `size` is 0
 *         or less.
 */
int zymdb_get_pci_cardname_by_funkey(unsigned int funkey, char* name, int size);

/**
 * Reads the four PCI identifiers of a function. An identifier that cannot be read leaves its output as it
 * was, and so does an unknown function.
 *
 * @param funkey     function key of the function.
 * @param vendor     VendorId.
 * @param device     DeviceId.
 * @param subvendor  SubVendorId.
 * @param subdevice  SubDeviceId.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): an output is null
 *         - the status of the client's query; 0 also for an unknown function
 */
int zymdb_get_pci_id_by_funkey(int funkey, unsigned short* vendor, unsigned short* device,
                               unsigned short* subvendor, unsigned short* subdevice);

/* ---- One function -------------------------------------------------------------------------------- */

/**
 * A PCI function: a row of PCIs, each field from the column of its name. Unreadable numbers are 0 where no
 * other default is stated.
 */
struct _ZYMDB_PCI_Generic {
  uint32_t _id;             /**< row id */
  uint32_t BridgeId;        /**< function key of the bridge above; 0: none known */
  uint8_t SegNo;            /**< segment (domain) */
  uint8_t BusNo;            /**< bus number */
  uint8_t DeviceNo;         /**< device number */
  uint8_t FunctionNo;       /**< function number */
  uint16_t VendorId;        /**< PCI vendor id */
  uint16_t DeviceId;        /**< PCI device id */
  uint32_t ClsCode;         /**< class code: base class << 16 | sub class << 8 | programming interface */
  uint8_t RevId;            /**< revision */
  uint16_t SubVendorId;     /**< the subsystem's vendor id */
  uint16_t SubDeviceId;     /**< the subsystem's device id */
  uint16_t SlotNo;          /**< slot number within the location */
  uint8_t Location;         /**< board or slot, a _ZYMDB_Location */
  char SlotDesignation[65]; /**< the slot's label; the list operation keeps one character less */
  uint8_t SlotType;         /**< SMBIOS slot type code */
  uint8_t SlotDataBusWidth; /**< SMBIOS slot data bus width code */
  uint8_t Hotplug;          /**< 1: the slot is hot-pluggable */
  uint8_t PCIType;          /**< PCI type code */
  uint8_t BladeSlotPort;    /**< port of a blade slot */
  uint8_t NodeIndex;        /**< node that the function belongs to */
  uint32_t FunType;         /**< function type code */
  uint8_t LanesInUse;       /**< negotiated link width, lanes; 4 when unreadable */
  uint8_t MaxLanes;         /**< largest link width, lanes; 16 when unreadable */
  uint8_t MaxPCIeType;      /**< highest PCI Express generation; 4 when unreadable */
  uint8_t PCIeType;         /**< negotiated PCI Express generation; 3 when unreadable */
};
typedef struct _ZYMDB_PCI_Generic _ZYMDB_PCI_Generic;

/** PCI functions. */
struct _ZYMDB_PCI_Generic_List {
  uint32_t count;            /**< functions in `items` */
  _ZYMDB_PCI_Generic* items; /**< the caller frees it */
};
typedef struct _ZYMDB_PCI_Generic_List _ZYMDB_PCI_Generic_List;

/** The physical side of a function's adapter: a row of PCIMisc. */
struct _ZYMDB_PCI_Misc {
  uint16_t MaxDataWidth;      /**< MaxDataWidth, bits; 0 when unreadable */
  uint16_t ConnectorType;     /**< ConnectorLayout, a number in text; when that is 0 or unreadable, 0x8004 for
                                   a function on the board, 0x12 for one in a slot, else 0 */
  uint16_t PackageType;       /**< PackageType, a number in text; when that is 0 or unreadable and the place
                                   is known, 9 (a card) or 0x8000 (on the board), else 0 */
  char ConnectorTypeName[65]; /**< text of ConnectorType */
  char PackageTypeName[65];   /**< text of PackageType */
  char OtherPackageType[65];  /**< OtherPackageType; empty when unreadable */
  char AIMSpecVersion[9];     /**< AIMSpecVersion; empty when unreadable */
};
typedef struct _ZYMDB_PCI_Misc _ZYMDB_PCI_Misc;

/** Vital product data of a function: a row of VPDs, each field from the column of its name. */
struct _ZYMDB_PCI_VPD {
  char UUID[33];         /**< universally unique identifier */
  char ProductName[129]; /**< product name */
  char Manufacture[33];  /**< maker */
  char SerialNo[17];     /**< serial number */
  char PartNo[17];       /**< part number */
  char Model[33];        /**< model */
  char FRUNo[17];        /**< number of the field-replaceable unit */
};
typedef struct _ZYMDB_PCI_VPD _ZYMDB_PCI_VPD;

/**
 * Reads one function.
 *
 * @param funkey  function key of the function.
 * @param info    filled when there is such a function; untouched, with status 0, when there is none.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `info` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_generic_info(unsigned int funkey, _ZYMDB_PCI_Generic* info);

/**
 * Lists functions.
 *
 * @param list    on success filled; without a matching function only `count` is set to 0. Empty after a
 *                failure.
 * @param filter  on the columns of PCIs; null for all functions.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_OK (0); also when stepping fails on the way: what was read is listed
 */
int zymdb_get_pci_generic_info_list(_ZYMDB_PCI_Generic_List* list, const char* filter);

/**
 * Reads a function's connector and package.
 *
 * @param funkey  function key of the function.
 * @param misc    untouched unless the status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `misc` is null
 *         - a status of the client's query
 *         - the step's code: ZYM_DB_STATUS_DONE (10) for a function without a row
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_misc_info(int funkey, _ZYMDB_PCI_Misc* misc);

/**
 * Reads a function's vital product data.
 *
 * @param funkey  function key of the function.
 * @param vpd     untouched, with status 0, when the function's hardware has none.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `vpd` is null, or the function's hardware id could not be looked
 *           up (an unknown function too)
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_vpd_info(unsigned int funkey, _ZYMDB_PCI_VPD* vpd);

/* ---- Adapters ------------------------------------------------------------------------------------ */

/** An adapter: a card or an on-board device, folded from its functions' rows in PCIAdapter. */
struct _ZYMDB_PCI_Adapter {
  uint32_t PCIKey;            /**< PCI key, never 0 */
  uint16_t NodeNo;            /**< node that the adapter belongs to */
  uint16_t SlotNo;            /**< slot number within the location */
  uint16_t ConnectorType;     /**< a connector type code when AIMSupported is 1 or the adapter is on the
                                   board, else a slot type code; 0 when not known */
  char ConnectorTypeName[65]; /**< text of ConnectorType */
  char CardName[129];         /**< name */
  uint8_t AIMSupported;       /**< a _ZYMDB_AIMSupport; 3 only where no function is managed */
  uint8_t Location;           /**< board or slot, a _ZYMDB_Location */
  uint8_t HealthStatus;       /**< health, as last written by zymdb_set_adapter_health_status */
  uint8_t NcsiIdValid;        /**< 1: PackageID1 and PackageID2 are this slot's */
  uint8_t PackageID1;         /**< the first NC-SI package id; 0xFF when there is none */
  uint8_t PackageID2;         /**< the second of them */
};
typedef struct _ZYMDB_PCI_Adapter _ZYMDB_PCI_Adapter;

/** Adapters. */
struct _ZYMDB_PCI_Adapter_List {
  uint32_t count;               /**< adapters in `adapters` */
  _ZYMDB_PCI_Adapter* adapters; /**< the caller frees it */
};
typedef struct _ZYMDB_PCI_Adapter_List _ZYMDB_PCI_Adapter_List;

/**
 * Lists the adapters, one record per PCI key.
 *
 * Left out are rows with an unreadable column, rows with PCI key 0 and drive carriers ("Hot Swap SSD" in the
 * name). The names come from one of the adapter's functions, whichever the database picks.
 *
 * @param list  emptied once the arguments are accepted, filled on success.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0): also without adapters; `adapters` may then be a zero-length array
 */
int zymdb_get_pci_adapter_list(_ZYMDB_PCI_Adapter_List* list);

/* ---- Adapter health and NC-SI package identifiers ------------------------------------------------ */

/** The NC-SI package identifiers of one slot: a row of NCSIPackageID. */
struct _ZYMDB_NCSIPackageID {
  uint16_t SlotNo;    /**< slot number within the location */
  uint8_t Location;   /**< kind of place, a _ZYMDB_Location */
  uint8_t PackageID1; /**< first package identifier */
  uint8_t PackageID2; /**< second package identifier */
};
typedef struct _ZYMDB_NCSIPackageID _ZYMDB_NCSIPackageID;

/** NC-SI package identifiers of all slots. */
struct _ZYMDB_NCSIPackageID_List {
  uint8_t count;                 /**< meant for the handful of slots of one system: wraps beyond 255 */
  _ZYMDB_NCSIPackageID* entries; /**< the caller frees it */
};
typedef struct _ZYMDB_NCSIPackageID_List _ZYMDB_NCSIPackageID_List;

/**
 * Reads the health of a slot's adapter; the first of its functions decides.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slotNo    the slot number within the location.
 * @param health    opaque to the library. Untouched unless the status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `health` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NOT_FOUND (11): no adapter in the slot
 *         - the step's code when it yields no row; the status of the read; 0 when it succeeded
 */
int zymdb_get_adapter_health_status(int location, int slotNo, uint8_t* health);

/**
 * Writes the health of a slot's adapter, to the rows of all its functions. Creates no row.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slotNo    the slot number within the location.
 * @param health    opaque to the library; readers take its low 8 bits.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4): logged
 *         - the status of the client's update, logged when not 0
 */
int zymdb_set_adapter_health_status(int location, int slotNo, unsigned int health);

/**
 * Reads the PCI key of a slot's adapter.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slotNo    the slot number within the location.
 * @param pciKey    must not be null.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database, a failed query, or no adapter in the slot
 *         - the status of the read; 0 when it succeeded
 */
int zymdb_get_adapter_pcikey_by_slotNo(int location, int slotNo, uint32_t* pciKey);

/**
 * Reads the NC-SI package identifiers of a slot. An identifier that cannot be read leaves its output as it
 * was.
 *
 * @param location  kind of place, a _ZYMDB_Location.
 * @param slotNo    the slot number within the location.
 * @param id1, id2  must not be null.
 * @return ZYM_DB_STATUS_NO_DB (6) without a database, after a failed query, and for a slot without a row;
 *         else 0.
 */
int zymdb_get_ncsi_id_by_slotNo(int location, int slotNo, uint8_t* id1, uint8_t* id2);

/**
 * Writes the NC-SI package identifiers of a slot; inserts the slot's row when it has none.
 *
 * The row is looked for by `location` and `slotNo` as they are, and stored in 8 and 16 bits: numbers that are
 * wider never find the row that they made, so that every call inserts one more.
 *
 * @param location  kind of place, a _ZYMDB_Location. A new row takes the low 8 bits.
 * @param slotNo    the slot number within the location. A new row takes the low 16 bits.
 * @param type      stored with a new row only.
 * @param id1       PackageID1.
 * @param id2       PackageID2.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4): logged
 *         - the status of the client's update or insert, logged when not 0
 */
int zymdb_set_ncsi_id_by_slotNo(int location, int slotNo, uint8_t type, uint8_t id1, uint8_t id2);

/**
 * Lists the NC-SI package identifiers of all slots. Rows with an unreadable column are left out.
 *
 * @param list  filled on success, empty after a failure.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but 0 and ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_ncsi_id_list(_ZYMDB_NCSIPackageID_List* list);

/* ---- Configuration data -------------------------------------------------------------------------- */

/**
 * Gives every function that has configuration settings an adapter row, marked with AIMSupported 3.
 *
 * Rows that collectors wrote (AIMSupported other than 0 and 3) are never touched. Merged rows whose settings
 * have disappeared are demoted to 0, or deleted when their function is gone too. A new row takes its name and
 * connector from a row of the same adapter; an adapter without any row ends the merge. What was merged before
 * a failure stays.
 *
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status that ended the merge, logged: of a query, of a step, of the insert or the update. A
 * step that found no row, and a query without a result, end it with 0
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_merge_aim_ucm_pfa(void);

/* ---- Graphics and accelerator cards -------------------------------------------------------------- */

/** A known accelerator card, told by its four PCI identifiers. */
struct _ZYMDB_HC_Card {
  uint16_t VendorId;    /**< PCI vendor id */
  uint16_t DeviceId;    /**< PCI device id */
  uint16_t SubVendorId; /**< 0 where the card's subsystem is not known */
  uint16_t SubDeviceId; /**< 0 likewise */
  char CardName[128];   /**< name to show */
  char Info[24];        /**< "N/A" */
  char Manufacture[64]; /**< maker */
  uint16_t BoardPower;  /**< watts; 0 where it is not known */
};
typedef struct _ZYMDB_HC_Card _ZYMDB_HC_Card;

/** The known accelerator cards, zymdb_get_hc_card_count() of them. Read-only. */
extern const _ZYMDB_HC_Card hc_card_table[37];

/** The number of cards in hc_card_table. Needs no database. @return 37. */
int zymdb_get_hc_card_count(void);

/** The video memory of a graphics function: a row of PCIGPU. */
struct _ZYMDB_GPU_Device {
  uint8_t VideoMemoryType;      /**< VideoMemoryType, a number in text; 0 when unreadable */
  char VideoMemoryTypeName[65]; /**< text of VideoMemoryType */
  char VideoMemorySize[17];   /**< VideoMemorySize as stored; this project's collector stores MiB. Empty when
                                   unreadable */
  uint8_t TotalGPUChipNumber; /**< TotalGPUChipNumber; 0 when unreadable */
};
typedef struct _ZYMDB_GPU_Device _ZYMDB_GPU_Device;

/** A chip of a graphics function: a row of PCIGPUChip, each field from the column of its name. */
struct _ZYMDB_GPU_Chip {
  char GPUChipName[33];                /**< name */
  char GPUChipManufacturer[17];        /**< maker */
  char GPUChipModel[17];               /**< model */
  char GPUChipPartNumber[17];          /**< part number */
  char GPUChipSKU[17];                 /**< stock keeping unit */
  char GPUChipSerialNumber[17];        /**< serial number */
  char GPUChipFamily[33];              /**< family */
  char GPUChipUniqueID[17];            /**< unique identifier */
  char GPUChipFormFactorName[65];      /**< text of GPUChipFormFactor */
  uint8_t GPUChipFormFactor;           /**< a number in text; 0 when unreadable, as every number below */
  uint8_t GPUChipIndex;                /**< index of the chip on its card */
  uint8_t GPUChipNumberOfEnabledCores; /**< enabled cores; the low 8 bits */
  uint32_t ExternalBusClockSpeed;      /**< MHz */
  uint32_t GPUChipMaxClockSpeed;       /**< MHz */
  uint16_t GPUChipAddressWidth;        /**< bits */
  uint16_t GPUChipDataWidth;           /**< bits */
};
typedef struct _ZYMDB_GPU_Chip _ZYMDB_GPU_Chip;

/** Chips. */
struct _ZYMDB_GPU_Chip_List {
  uint32_t count;         /**< chips in `items` */
  _ZYMDB_GPU_Chip* items; /**< the caller frees it */
};
typedef struct _ZYMDB_GPU_Chip_List _ZYMDB_GPU_Chip_List;

/**
 * Reads the video memory of a function.
 *
 * @param funkey  function key of the function.
 * @param dev     untouched, with status 0, when the function has no such row.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `dev` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_gpu_device_info(int funkey, _ZYMDB_GPU_Device* dev);

/**
 * Lists the chips of a function.
 *
 * @param funkey  function key of the function.
 * @param list    filled on success, also without chips: `items` may then be a zero-length array. Empty after
 *                a failure, but untouched when a step fails.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_gpu_chip_list(int funkey, _ZYMDB_GPU_Chip_List* list);

/**
 * Writes the firmware version of the NVIDIA card on a bus to its rows in Firmwares (VersionString). Creates
 * no row.
 *
 * @param text  NUL-terminated.
 * @param bus   the bus of any of its functions; the first that the database finds is taken.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database, or `text` is null
 *         - ZYM_DB_STATUS_NOT_FOUND (11): no function on that bus, or without a hardware id; told to the
 * system log
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's update
 */
int zymdb_update_nvidia_gpu_fw_version(const char* text, int bus);

/**
 * Writes the release date of the card's firmware (ReleaseDate of Firmwares), as
 * zymdb_update_nvidia_gpu_fw_version does its version.
 *
 * @param text  NUL-terminated.
 * @param bus   as there.
 * @return as zymdb_update_nvidia_gpu_fw_version.
 */
int zymdb_update_nvidia_gpu_fw_release_date(const char* text, int bus);

/**
 * Writes the card's serial number (SerialNo of VPDs), as zymdb_update_nvidia_gpu_fw_version does the
 * firmware's version.
 *
 * @param text  NUL-terminated.
 * @param bus   as there.
 * @return as zymdb_update_nvidia_gpu_fw_version.
 */
int zymdb_update_nvidia_gpu_serial_number(const char* text, int bus);

#ifdef __cplusplus
}
#endif

#endif
