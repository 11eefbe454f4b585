/**
 * What this project's own database client offers beyond the controller's client interface.
 *
 * A program that must also run on another client declares these weak (or looks them up by name) and does
 * without them when they are absent.
 *
 * Statuses. Every operation answers 0, or a code of zymdb_db.h or of this client's own.
 */
#ifndef ZYMDB_PLATFORM_H
#define ZYMDB_PLATFORM_H

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Begins a transaction on the calling thread: what it reads and writes through `handle` until the commit is
 * one unit that others see whole or not at all. Waits for other writers as a single write does.
 *
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null handle; ZYM_DB_STATUS_ERROR when one is open on this
 *         thread already; a status of the client's own when the database stays locked or fails.
 */
int zym_db_begin(_zym_db_handle_t* handle);

/**
 * Ends the calling thread's transaction on `handle` and makes it durable. On failure nothing of it was
 * written; only when the device fails while it flushes, the whole transaction may turn out to be there once
 * the device works.
 */
int zym_db_commit(_zym_db_handle_t* handle);

/** Ends the calling thread's transaction on `handle` and forgets what it wrote. */
int zym_db_rollback(_zym_db_handle_t* handle);

/**
 * Adds `column` with the `size` bytes at `data`, which are copied, to the value set `values`.
 *
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null pointer or a negative size.
 */
int zym_db_content_put_blob(zym_db_content_values_t* values, const char* column, const void* data, int size);

/**
 * Whether the process may make databases. With 0, opening an inventory that is missing or empty fails and
 * makes no file, and a missing property database counts as an empty one that cannot be written. Else, and
 * unless this is called, a missing or empty file becomes a new database. What is open stays open.
 */
void zym_db_allow_creation(int allowed);

/**
 * The last failure of an operation of this client on the calling thread, as one line without control
 * characters: what was logged, or the status's text where nothing was. Failed openings, queries, changes,
 * transactions and value sets count, and whatever is given an invalid argument there; reads of a result do
 * not. Successes leave it as it is.
 *
 * @param status  receives the failure's status, 0 for none; may be null
 * @return the line, never null; empty when nothing failed since the thread began or zym_db_clear_error().
 *         Valid until this thread's next call of the client.
 */
const char* zym_db_last_error(int* status);

/** Forgets the calling thread's last failure. */
void zym_db_clear_error(void);

#ifdef __cplusplus
}
#endif

#endif
