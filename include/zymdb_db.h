/**
 * Record access to the inventory database.
 *
 * Conventions that hold for every header of the library:
 *
 *  1. Handles. Operations take the shared inventory database handle themselves; there is no set-up or
 *     shut-down call and any operation may be called at any time. Without a database they answer
 *     ZYM_DB_STATUS_NO_DB (6). As a rule the handle is looked for before an argument is judged; each
 *     operation lists its statuses in the order in which they are checked.
 *  2. Statuses. Operations answer an int: 0 for success, a code of zym_db_status_t, or a code of the
 *     database client, which is passed on unchanged. Operations that answer something else say so.
 *  3. Ownership. Arguments stay the caller's. An array handed out in a list record was allocated with
 *     malloc and is released by the caller with free. After a failure a list is empty (count 0, null
 *     pointer) unless the operation says otherwise.
 *  4. Texts. Text fields are NUL-terminated arrays; longer column values are cut to fit. Filters are texts
 *     in the database's dialect: what the caller puts into one is not escaped.
 *  5. Numbers. A column that cannot be read (NULL, or of another type) gives the default stated at its
 *     field, so a 0 may mean "0" or "not known". A larger value is cut to the low bits of its field.
 *  6. Keys. Function key: segment << 24 | bus << 16 | device << 8 | function, one PCI function. PCI key: one
 *     PCI device (a card or an on-board device), shared by its functions. Keys from 2^31 on match nothing in
 *     the operations that filter by a signed number.
 *  7. Threads. Every operation may be called from any number of threads at once. Nothing is locked between
 *     two calls: two callers that look for the same row and find none may both insert it.
 *  8. Errors. No exception leaves an operation, nothing is retried, and everything is released on every
 *     path.
 */
#ifndef ZYMDB_DB_H
#define ZYMDB_DB_H

#include <stdint.h>

#ifdef __cplusplus
#include <string>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Status codes. The gaps belong to the database client. */
typedef enum zym_db_status_t {
  ZYM_DB_STATUS_OK = 0,            /**< success */
  ZYM_DB_STATUS_ERROR = 1,         /**< generic failure; no such processor or memory module */
  ZYM_DB_STATUS_INVALID_PARAM = 3, /**< a required argument is null or out of range */
  ZYM_DB_STATUS_NO_MEMORY = 4,     /**< an allocation failed */
  ZYM_DB_STATUS_NO_DB = 6,         /**< no database handle; nothing matched, where an operation says so */
  ZYM_DB_STATUS_ROW = 9,           /**< the cursor stands on a row */
  ZYM_DB_STATUS_DONE = 10,         /**< no more rows; no matching row, where an operation says so */
  ZYM_DB_STATUS_NOT_FOUND = 11,    /**< no matching record, or an unexpected number of rows */

  ZYMDB_PCI_SETTING_COUNT_MISMATCH = 30, /**< the number of stored settings is not the one expected */
  ZYMDB_PCI_SETTING_BIOS_SET_FAIL = 31,  /**< the BIOS configuration manager refused the list */
  ZYMDB_PCI_SETTING_PARSING = 32,        /**< settings are being parsed right now */
  ZYMDB_PCI_SETTING_ID_NOEXIT = 33       /**< a setting named in a save list does not exist */
} zym_db_status_t;

/**
 * Kinds of places. Columns Location and LocationId hold them, and the number of a slot or bay counts within
 * its kind. Adapters and PLDM devices are on the board or in slots, drives in slots or bays.
 */
typedef enum _ZYMDB_Location {
  ZYMDB_LOCATION_BOARD = 0,  /**< on the system board */
  ZYMDB_LOCATION_SLOT = 1,   /**< in a slot */
  ZYMDB_LOCATION_BAY = 2,    /**< in a bay of a backplane */
  ZYMDB_LOCATION_M2_BAY = 3, /**< in an M.2 bay */
  ZYMDB_LOCATION_7MM_BAY = 4 /**< in a 7 mm bay */
} _ZYMDB_Location;

/** Kinds of hardware that hardware ids belong to, as far as the library tells them apart: HardwareTypeId. */
typedef enum _ZYMDB_HardwareType {
  ZYMDB_HARDWARE_DRIVE = 2, /**< drives; a sensor of theirs may have another type as well */
  ZYMDB_HARDWARE_PCI = 3    /**< PCI devices without a kind of their own */
} _ZYMDB_HardwareType;

/** A connection to a database. */
struct _zym_db_handle_t;
typedef struct _zym_db_handle_t _zym_db_handle_t;

/** An ordered set of (column, value) pairs for an insert or update. */
struct zym_db_content_values_t;
typedef struct zym_db_content_values_t zym_db_content_values_t;

/** The value of one "?" of a filter. */
struct _zym_db_param_t {
  uint32_t type;     /**< 2: unsigned 16-bit, 3: unsigned 32-bit */
  uint32_t reserved; /**< 0 */
  uint8_t flag;      /**< 1 */
  uint64_t value;    /**< in the low 16 or 32 bits, as the type says */
};
typedef struct _zym_db_param_t _zym_db_param_t;

#ifdef __cplusplus
} /* extern "C" */

/**
 * Finds the first row of a table that matches a filter.
 *
 * @param handle  a database handle.
 * @param table   the table's name.
 * @param where   the filter; required.
 * @return the row's "_id"; 0 when no row matches or the first step fails; -1 when an argument is null
 *         (nothing is logged), when the query fails or gives no result ("Failed to find record:", "table=…"
 *         and "filter=…" are logged as errors), or when the "_id" cannot be read.
 */
int64_t find_db_record(_zym_db_handle_t* handle, const char* table, const char* where);

/**
 * Inserts one row.
 *
 * @param handle  a database handle.
 * @param table   the table's name.
 * @param values  the row's columns; columns left out take the database's defaults.
 * @return the new row's "_id"; -1 when an argument is null, or when the insert fails ("Failed to insert
 *         record: …" with the client's error text is logged).
 */
int64_t insert_db_record(_zym_db_handle_t* handle, const char* table, const zym_db_content_values_t* values);

/**
 * Locates one row and writes columns of it.
 *
 * The update is addressed to the located row's "_id" (its low 32 bits), and, when `filter` is given, only
 * takes place where that holds too. Whether the filter held is not told: an excluded row still gives its id.
 *
 * @param handle  a database handle.
 * @param table   the table's name.
 * @param where   locates the row, as in find_db_record.
 * @param values  the columns to write.
 * @param filter  a further condition, usually "something differs"; may be null.
 * @return the located row's "_id"; 0 when no row matches `where` (nothing is written or logged); -1 when an
 *         argument but `filter` is null, when the lookup fails, or when the update fails ("Failed to update
 *         record:", "table=…", "filter=…" are logged).
 */
int64_t update_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                         const zym_db_content_values_t* values, const char* filter);

/**
 * Writes columns of the located row, or inserts the row when there is none. Not atomic: see convention 7.
 *
 * A lookup that fails does not fall back to an insert.
 *
 * @param handle  a database handle.
 * @param table   the table's name.
 * @param where   locates the row; it is not part of what an insert writes.
 * @param values  the columns to write or insert.
 * @param filter  as in update_db_record; may be null.
 * @return the "_id" of the row located or inserted; below 1 on failure: -1 without a log line when an
 *         argument but `filter` is null, else after two "insert/update record failed: …" error lines.
 */
int64_t insert_or_update_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                                   const zym_db_content_values_t* values, const char* filter);

/**
 * Deletes the rows that match a filter, and logs "Delete from …" as information when there were any.
 *
 * @param handle  a database handle.
 * @param table   the table's name.
 * @param where   the filter; null deletes every row.
 * @param params, nparams  the values of the filter's "?", and how many there are; may be null with 0.
 * @return in this order: ZYM_DB_STATUS_INVALID_PARAM when `handle` or `table` is null; the client's status,
 *         after two error lines when it is not 0.
 */
int delete_db_record(_zym_db_handle_t* handle, const char* table, const char* where,
                     const _zym_db_param_t* params, int nparams);

/**
 * Adds a text to a value set; an empty text is stored as NULL.
 *
 * @param values  the value set.
 * @param column  the column's name.
 * @param text    NUL-terminated; must not be null.
 * @return the status of the client's put.
 */
int put_text_value(zym_db_content_values_t* values, const char* column, unsigned char* text);

/**
 * A filter term that holds where a text column differs from a value. A NULL differs from every value but
 * the empty one.
 *
 * @param column  the column's name. Null breaks the term off where the name should stand.
 * @param value   NUL-terminated, placed between double quotes as it is; must not be null.
 * @return `(C IS NULL OR C!="V")`; `C IS NOT NULL` when the value is empty.
 */
std::string get_sql_str(const char* column, unsigned char* value);

#endif

#endif
