/**
 * Processors of the host.
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
  uint16_t L2CacheMaxSize;   /**< level-2 cache, as for level 1 */
  uint16_t L2CacheInstalled;
  uint16_t L2CacheType;
  uint16_t L2CacheConfig;
  uint16_t L3CacheMaxSize; /**< level-3 cache, as for level 1 */
  uint16_t L3CacheInstalled;
  uint16_t L3CacheType;
  uint16_t L3CacheConfig;
  uint8_t NodeIndex; /**< node that the processor belongs to */
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

#ifdef __cplusplus
}
#endif

#endif
