/**
 * Configuration settings of PCI adapters: what the configuration parser found, and the values that users want
 * to take effect next.
 *
 * The conventions at the top of zymdb_db.h hold. While the parser rewrites the settings, it keeps the marker
 * file /tmp/dp.ucmparsing; as long as that can be opened, the queries below answer ZYMDB_PCI_SETTING_PARSING.
 */
#ifndef ZYMDB_PCI_SETTINGS_H
#define ZYMDB_PCI_SETTINGS_H

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
#include <string>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records ------------------------------------------------------------------------------------- */

#pragma pack(push, 1)

/**
 * A setting: a row of PCISetting, each field from the column of its name. Byte-packed: numbers need not be
 * aligned. An empty text is stored as NULL, and a NULL is read as the empty text; an unreadable number is 0.
 */
struct ZYMDB_PCI_Config_Setting {
  char SettingID[129];        /**< unique; the text before its first "." names its family */
  char SettingName[65];       /**< attribute name */
  uint32_t PfaKey;            /**< function key of the adapter */
  char CurrentValue[257];     /**< value in force */
  char PendingValue[257];     /**< value set by a user, to take effect later */
  char SuppressIf[1025];      /**< expression: when to hide the setting */
  char GrayIf[1025];          /**< expression: when to show it without letting it be changed */
  char GroupID[257];          /**< its group's identifier */
  char GroupName[257];        /**< the group's display name */
  char GroupSuppressIf[1025]; /**< expression: when to hide the group */
  char GroupGrayIf[1025];     /**< expression: when to show it without letting it be changed */
  char Mriname[65];           /**< name in machine-readable information */
  char ShortDesc[129];        /**< short description */
  char FullDesc[257];         /**< long description */
  uint32_t Type;              /**< type code */
  uint32_t Flags;         /**< bit 1 (value 2) marks what zymdb_get_pci_configSet_list may be limited to */
  int32_t Mininstances;   /**< fewest instances */
  int32_t Maxinstances;   /**< most instances */
  char Defvalue[65];      /**< default value */
  char Mfg_default[65];   /**< the manufacturing's own default */
  char Defaultaction[65]; /**< default action */
  char RecordId[65];      /**< record identifier of the configuration data */
  uint32_t Minim;         /**< a number's lower bound */
  uint32_t Maxim;         /**< a number's upper bound */
  uint32_t Step;          /**< a number's step */
  uint32_t Mins;          /**< a text's lower bound, as parsed */
  uint32_t Maxs;          /**< a text's upper bound, as parsed */
  char Pattern[129];      /**< pattern that a value has to match */
  int32_t Numchoices;     /**< number of choices */
  char Choices[1025];     /**< list of the choices */
};
typedef struct ZYMDB_PCI_Config_Setting ZYMDB_PCI_Config_Setting;

/** A new value to save. Byte-packed. */
struct ZYMDB_PCI_Config_Set {
  char SettingID[65];    /**< the setting to change */
  char PendingValue[65]; /**< its new value */
  uint32_t Result;       /**< written by the save: the BIOS configuration manager's status for this entry; see
                              zymdb_save_pci_configSet_list */
};
typedef struct ZYMDB_PCI_Config_Set ZYMDB_PCI_Config_Set;

#pragma pack(pop)

/* ---- Writing ------------------------------------------------------------------------------------- */

/**
 * Stores one parsed setting: inserts its row, or rewrites all of it, the pending value too, when anything in
 * it differs. An equal record writes nothing, unless one of its signed numbers is negative: that never
 * compares equal and is written anew each time.
 *
 * Texts are not escaped. A double quote in the id breaks the look-up: the setting is never stored. One in any
 * other text is stored when the row is inserted and breaks each comparison from then on: every later call for
 * this setting fails with ZYM_DB_STATUS_ERROR, with an equal record too, and the row stays as it is.
 *
 * @param setting  the setting. Null is accepted and stores nothing.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYM_DB_STATUS_OK (0): `setting` is null
 *         - ZYM_DB_STATUS_NO_MEMORY (4)
 *         - ZYM_DB_STATUS_ERROR (1): the row could not be written; logged
 *         - ZYM_DB_STATUS_OK (0)
 */
int extract_PCISetting_info(const ZYMDB_PCI_Config_Setting* setting);

/**
 * Saves new values: records each as its setting's pending value and hands the list to the BIOS configuration
 * manager.
 *
 * Nothing is written unless every setting exists. What was written stays when a later entry or the manager
 * fails. A setting without a pending value (NULL: it was stored with an empty one) gets none here, since the
 * write is limited to rows whose pending value differs; the manager is handed its new value all the same.
 *
 * `Result` is the manager's own status, 0 for an entry that it accepted. Those of this project's manager:
 *
 *  - 0: accepted; the value stands among the pending ones
 *  - ZYM_DB_STATUS_INVALID_PARAM (3): the id is empty
 *  - ZYM_DB_STATUS_NOT_FOUND (11): the firmware lists its attributes, and this one is not among them
 *  - ZYM_DB_STATUS_NO_DB (6): the property database, where pending values stand, cannot be opened
 *  - ZYM_DB_STATUS_ERROR (1): there is no session
 *  - any other: the database client's status for the property database, for one entry; or, when the values
 * could not be made durable, for every entry that was not refused for a reason of its own. None of them is
 * pending then
 *
 * Entries that it accepts are kept though it refuses others. The status of another manager is its own
 * business.
 *
 * @param list   `count` entries; their texts are not escaped. `Result` is written, in every entry, exactly
 *               when the manager was called; otherwise it is untouched. May be null with 0 entries.
 * @param count  0 writes nothing and still opens and closes a session with the manager.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYMDB_PCI_SETTING_ID_NOEXIT (33): an entry's setting does not exist or could not be looked up;
 *           logged, nothing was changed
 *         - ZYM_DB_STATUS_NO_MEMORY (4): no value set; logged
 *         - the status of a client's update that failed; logged, the entries before it are written
 *         - ZYM_DB_STATUS_NO_MEMORY (4): no requests for the manager; all entries are written
 *         - ZYMDB_PCI_SETTING_BIOS_SET_FAIL (31): the manager refused the list; logged, all entries are
 *           written and `Result` tells which of them it refused
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_save_pci_configSet_list(ZYMDB_PCI_Config_Set* list, unsigned int count);

/* ---- Queries ------------------------------------------------------------------------------------- */

/**
 * Appends the setting-id families of an adapter, separated by ":". Only neighbours are folded: a family that
 * comes back after another one is listed again.
 *
 * A setting counts only where the client answers the read of its id with a nonzero status and delivers the
 * text all the same. An ordinary client reads a stored id with status 0: its callers get no families, and
 * `ids` as they passed it.
 *
 * @param pfaKey  function key of the adapter.
 * @param ids     NUL-terminated, normally empty, and not bounded: the caller provides room for the adapter's
 *                ids. Must not be null.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYMDB_PCI_SETTING_PARSING (32)
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0); also when stepping fails on the way: what was read is appended
 */
int zymdb_get_pci_configID(unsigned int pfaKey, char* ids);

/**
 * Counts the settings of an adapter.
 *
 * @param pfaKey  function key of the adapter.
 * @param prefix  counts the ids that begin with it only; null for all. Not escaped: "%" and "_" match as in
 *                LIKE. The filter with it is cut at 127 characters.
 * @param count   low 16 bits of the number; 0 for adapters of vendor id 0x1000, whatever is stored for them.
 *                Must not be null. Untouched unless the status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYMDB_PCI_SETTING_PARSING (32)
 *         - a status of zymdb_get_pci_generic_info; a function that is not known is no failure
 *         - a status of the client's query
 *         - ZYM_DB_STATUS_OK (0)
 */
int zymdb_get_pci_configSet_count(unsigned int pfaKey, const char* prefix, unsigned short* count);

/**
 * Reads the settings of an adapter into the caller's array. A setting whose Flags cannot be read is left out.
 *
 * @param pfaKey       function key of the adapter.
 * @param prefix       as in zymdb_get_pci_configSet_count.
 * @param expected     the number of settings that the caller has counted, and room for: all of them, whether
 *                     or not `flaggedOnly` leaves some out.
 * @param records      room for `expected` records. Of those after the first `filled`, `Flags` may have been
 *                     written.
 * @param flaggedOnly  not 0: only settings with bit 1 (value 2) of Flags.
 * @param filled       low 16 bits of the number of records filled. Must not be null. Untouched unless the
 *                     status is 0.
 * @return checked in this order:
 *         - ZYM_DB_STATUS_NO_DB (6): no database
 *         - ZYMDB_PCI_SETTING_PARSING (32)
 *         - a status of the client's query
 *         - ZYMDB_PCI_SETTING_COUNT_MISMATCH (30): there are not `expected` settings; nothing is filled
 *         - ZYM_DB_STATUS_OK (0); also when stepping fails on the way: what was read is filled
 */
int zymdb_get_pci_configSet_list(unsigned int pfaKey, const char* prefix, unsigned int expected,
                                 ZYMDB_PCI_Config_Setting* records, unsigned short flaggedOnly,
                                 unsigned short* filled);

#ifdef __cplusplus
} /* extern "C" */

/**
 * Whether a file can be opened for reading; one that exists and may not be read counts as absent.
 *
 * @param path  what is looked for: a file, or anything else that can be opened. Nothing is waited for.
 * @return true when it can be.
 */
bool fileexist(const std::string& path);

#endif

#endif
