/**
 * Processors and memory modules of the host.
 *
 * The conventions at the top of zymdb_db.h hold.
 */
#ifndef ZYMDB_CPU_MEM_H
#define ZYMDB_CPU_MEM_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The processors known to the inventory, by row id. */
struct _ZYMDB_Processor_List {
  uint32_t count; /**< ids stored in `ids` */
  uint32_t* ids;  /**< "_id" of each row, in the database's order; the caller frees it */
};
typedef struct _ZYMDB_Processor_List _ZYMDB_Processor_List;

/**
 * One processor: a row of the table Processor, each field from the column of its name.
 *
 * Codes are those of the SMBIOS processor and cache structures. A number that cannot be read is 0, so 0 does
 * not tell "unknown" from "0"; a larger stored number is cut to the low bits of its field.
 */
struct _ZYMDB_Processor {
  uint32_t _id;              /**< in: the row wanted; out: its id */
  uint64_t ProcId;           /**< processor identification (CPUID signature and feature flags) */
  uint8_t ProcType;          /**< processor type code */
  uint16_t Family;           /**< processor family code */
  char Socket[65];           /**< socket designation */
  char Manufacturer[65];     /**< manufacturer */
  char Version[65];          /**< version: the processor's own name */
  uint8_t Voltage;           /**< voltage code; bit 7 set: tenths of a volt in the lower bits */
  uint16_t ExtClock;         /**< external clock, MHz */
  uint16_t MaxSpeed;         /**< maximum speed, MHz */
  uint16_t CurSpeed;         /**< current speed, MHz */
  uint8_t Status;            /**< status code; bit 6 set: the socket is populated */
  uint8_t Upgrade;           /**< upgrade (socket type) code */
  char SerialNo[65];         /**< serial number */
  char AssetTag[65];         /**< asset tag */
  char PartNo[65];           /**< part number */
  uint8_t CoreCount;         /**< cores; the low 8 bits of the stored number */
  uint8_t CoreEnabled;       /**< enabled cores; the low 8 bits */
  uint8_t ThreadCount;       /**< threads; the low 8 bits */
  uint16_t Characteristics;  /**< characteristics bits */
  uint16_t L1CacheMaxSize;   /**< level-1 cache: largest size, KiB */
  uint16_t L1CacheInstalled; /**< level-1 cache: installed size, KiB */
  uint16_t L1CacheType;      /**< level-1 cache: type code */
  uint16_t L1CacheConfig;    /**< level-1 cache: configuration bits */
  uint16_t L2CacheMaxSize;   /**< level-2 cache: largest size, KiB */
  uint16_t L2CacheInstalled; /**< level-2 cache: installed size, KiB */
  uint16_t L2CacheType;      /**< level-2 cache: type code */
  uint16_t L2CacheConfig;    /**< level-2 cache: configuration bits */
  uint16_t L3CacheMaxSize;   /**< level-3 cache: largest size, KiB */
  uint16_t L3CacheInstalled; /**< level-3 cache: installed size, KiB */
  uint16_t L3CacheType;      /**< level-3 cache: type code */
  uint16_t L3CacheConfig;    /**< level-3 cache: configuration bits */
  uint8_t NodeIndex;         /**< node that the processor belongs to */
};
typedef struct _ZYMDB_Processor _ZYMDB_Processor;

/**
 * Lists the processors' row ids. Rows whose id cannot be read are left out.
 *
 * @param list  filled; its former content is neither read nor freed. Untouched until the query has
 *              succeeded. When stepping fails on the way, it holds what was read so far and `ids` is still
 *              the caller's to free.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4): no array; `count` 0, `ids` null
 *         - a status of the client's step, but ZYM_DB_STATUS_DONE
 *         - ZYM_DB_STATUS_OK (0), also when there are none: `ids` may then be a zero-length array
 */
int zymdb_get_processor_list(_ZYMDB_Processor_List* list);

/**
 * Reads one processor.
 *
 * @param proc  its `_id` names the row; every field is written when there is such a row, none otherwise.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `proc` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_ERROR (1): no such row, or it could not be stepped to
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_processor(_ZYMDB_Processor* proc);

/**
 * Tells whether the platform tables mark this server as built on AMD processors. Needs no database.
 *
 * @return 1 or 0; 0 also when the tables cannot be read.
 */
int zymdb_is_amd(void);

/** The memory modules known to the inventory, by row id. */
struct _ZYMDB_Memory_List {
  uint32_t count; /**< ids stored in `ids` */
  uint32_t* ids;  /**< "_id" of each row, in the database's order; the caller frees it */
};
typedef struct _ZYMDB_Memory_List _ZYMDB_Memory_List;

/**
 * One position of a memory module, persistent modules included: a row of the table Memory, each field from
 * the column of its name.
 *
 * Codes are those of the SMBIOS memory device structure, or of the persistent module's own firmware. A number
 * that cannot be read is 0, so 0 does not tell "unknown" from "0"; a larger stored number is cut to the low
 * bits of its field. Sizes and capacities are in the unit that the collector stores; this project's stores
 * MiB for MemSize and bytes for the capacities.
 */
struct _ZYMDB_Memory {
  uint32_t _id;                /**< row id */
  uint32_t ArrayId;            /**< memory array that holds the slot */
  uint16_t SlotNo;             /**< slot number */
  uint16_t TotalWidth;         /**< total width, bits */
  uint16_t DataWidth;          /**< data width, bits */
  uint32_t MemSize;            /**< module size */
  uint8_t FormFactor;          /**< form factor code */
  uint8_t MemType;             /**< memory type code */
  uint16_t TypeDetail;         /**< type detail bits; 0x1000: non-volatile */
  uint16_t MaxSpeed;           /**< maximum speed, MT/s */
  uint16_t ClockSpeed;         /**< configured speed, MT/s */
  char DevLocator[65];         /**< device locator */
  char BankLocator[65];        /**< bank locator */
  char Manufacturer[65];       /**< manufacturer */
  char SerialNo[65];           /**< serial number */
  char AssetTag[65];           /**< asset tag */
  char PartNo[65];             /**< part number */
  uint8_t Attributes;          /**< attributes; the low four bits are the rank */
  uint8_t NodeIndex;           /**< node that the module belongs to */
  uint64_t Capacity;           /**< persistent module: raw capacity */
  uint64_t MemCapacity;        /**< persistent module: capacity in memory mode */
  uint64_t AppDirCap;          /**< persistent module: app-direct capacity */
  uint64_t UnconfigCap;        /**< persistent module: unconfigured capacity */
  uint64_t InaccCap;           /**< persistent module: inaccessible capacity */
  uint64_t ReservedCap;        /**< persistent module: reserved capacity */
  uint32_t Classification;     /**< module classification code */
  uint32_t RemainingLife;      /**< remaining life, percent */
  uint32_t SecurityState;      /**< security state bits; see bps_format_security_str */
  uint8_t HealthStatus;        /**< health status; see bps_format_hstate_str */
  uint8_t AlarmTrips;          /**< alarm trip bits */
  uint32_t LDShutdownCount;    /**< dirty shutdowns */
  uint8_t AITDRAMStatus;       /**< state of the address translation table's DRAM */
  uint16_t HealthStatusReason; /**< health status reason bits */
  uint8_t LLShutdownStatus;    /**< last shutdown status */
  uint8_t InfoMask;            /**< which of the module's values are valid */
  uint32_t CPUIndex;           /**< place of the slot: processor */
  uint32_t iMCNum;             /**< place of the slot: memory controller */
  uint32_t ChannelNum;         /**< place of the slot: channel */
  uint32_t DimmNum;            /**< place of the slot: module on the channel */
  char FirmwareVersion[65];    /**< module firmware version */
  char SoftwareID[65];         /**< module firmware's software identifier */
  uint8_t MajorHealth;         /**< major health state */
  uint8_t MinorHealth;         /**< minor health state */
  uint32_t RepairStatus;       /**< repair status */
};
typedef struct _ZYMDB_Memory _ZYMDB_Memory;

/**
 * Lists the memory modules' row ids, as zymdb_get_processor_list does those of processors.
 *
 * @param list  filled as there.
 * @return as zymdb_get_processor_list.
 */
int zymdb_get_memory_list(_ZYMDB_Memory_List* list);

/**
 * Reads the first memory module that matches a filter.
 *
 * @param mem     every field is written when there is such a row, none otherwise.
 * @param filter  on the columns of Memory; null for any row.
 * @param param   the value of the filter's one "?". One value is passed whatever the filter holds.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `mem` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_ERROR (1): no such row, or it could not be stepped to
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_memory_with_filter(_ZYMDB_Memory* mem, const char* filter, const _zym_db_param_t* param);

/**
 * Reads the memory module of a slot, as zymdb_get_memory_with_filter does.
 *
 * @param mem   every field is written when there is such a row, none otherwise.
 * @param slot  the slot number.
 * @return as zymdb_get_memory_with_filter.
 */
int zymdb_get_memory_by_slot(_ZYMDB_Memory* mem, unsigned short slot);

/**
 * Reads the memory module of a row id, as zymdb_get_memory_with_filter does.
 *
 * @param mem  every field is written when there is such a row, none otherwise.
 * @param id   the row id ("_id").
 * @return as zymdb_get_memory_with_filter.
 */
int zymdb_get_memory_by_id(_ZYMDB_Memory* mem, unsigned int id);

/**
 * Reads the health of the memory module in a slot. A value that cannot be read is 0.
 *
 * @param slot          the slot number.
 * @param major, minor  the low 8 bits of MajorHealth and MinorHealth.
 * @param repair        RepairStatus; may be null. All three are untouched unless the status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `major` or `minor` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - a status of the client's query
 *         - the step's code: ZYM_DB_STATUS_DONE (10) for a slot without a row
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_mpfa_health_by_slot(int slot, unsigned int* major, unsigned int* minor, unsigned int* repair);

/**
 * Lists the row ids of the persistent memory modules: those of the manufacturer "Intel" whose type detail has
 * the non-volatile bit. An id or a type detail that cannot be read is taken to be the previous row's.
 *
 * @param list  filled; its former content is neither read nor freed. Empty after a failure.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `list` is null
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_NO_MEMORY (4): no array; `count` 0, `ids` null
 *         - ZYM_DB_STATUS_OK (0), whatever the steps answered
 */
int zymdb_get_AEP_memory_list(_ZYMDB_Memory_List* list);

/**
 * Writes what a persistent module reports of itself to its row.
 *
 * @param mem   its `_id` names the row.
 * @param mode  2 writes SecurityState and InfoMask; 8 writes RemainingLife, HealthStatus, AlarmTrips,
 *              LDShutdownCount, AITDRAMStatus, HealthStatusReason, LLShutdownStatus and InfoMask; any other
 * mode issues an update without columns.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_INVALID_PARAM (3): `mem` is null
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - the status of the client's update; 0 also when there is no such row
 */
int zymdb_update_dcpmm_smart_info(const _ZYMDB_Memory* mem, int mode);

/**
 * Writes the text of a health state code: "Normal", "Noncritical", "Critical", "Fatal" or "others(0x…)".
 *
 * @param code  HealthStatus of a module.
 * @param text  at most `size` bytes with the NUL; nothing is written when it is null or `size` is 0.
 * @param size  the size of `text` in bytes.
 * @return the length of the whole text, also when it was cut; 0 when nothing was written.
 */
int bps_format_hstate_str(unsigned int code, char* text, unsigned int size);

/**
 * Writes the text of security state bits: "Not Supported", "Frozen", "Locked", "Disabled" or "Enabled".
 *
 * @param state  SecurityState of a module.
 * @param text   at most `size` bytes with the NUL; nothing is written when it is null or `size` is 0.
 * @param size   the size of `text` in bytes.
 */
void bps_format_security_str(unsigned int state, char* text, unsigned int size);

#ifdef __cplusplus
}
#endif

#endif
