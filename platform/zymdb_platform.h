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

#include <stdint.h>

#include "zymdb_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Begins a transaction on the calling thread: what it reads and writes through `handle` until the commit is
 * one unit that others see whole or not at all. Waits for other writers as a single write does. On a
 * database server a row that it inserts may be sent later, and its failure be told by what follows: by the
 * commit at the latest.
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
 * The inventory's generation: a number that grows by one with every transaction, of whichever process, that
 * changed anything (what it put back again counts), and with no other. It costs next to nothing while nobody
 * commits: no statement is run.
 *
 * A caller that reads the generation, then the inventory, and later finds the same generation, need not read
 * again. Within a transaction it is the one that the transaction began with.
 *
 * @param handle      of the inventory
 * @param generation  receives the number; 0 for an inventory that nobody has written yet; left as it is on
 * failure
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null pointer; ZYM_DB_STATUS_ERROR for a database without a
 *         generation: the properties, and an inventory in a folder that nobody may write; a status of the
 * client's own when it cannot be read
 */
int zym_db_generation(_zym_db_handle_t* handle, uint64_t* generation);

/**
 * Writes a new file that holds the whole inventory as one moment had it, while others read and write. It is
 * an inventory of its own: one file with mode 0640, with its journal.
 *
 * @param handle      of the inventory, or of another database of this client
 * @param path        the file to make; one that exists is a failure
 * @param generation  receives the copy's generation, 0 for a database that has none; may be null
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null pointer; ZYM_DB_STATUS_ERROR when a transaction is open
 * on this thread; a status of the client's own when the inventory cannot be read or the file not be written:
 * then there is no such file
 */
int zym_db_snapshot(_zym_db_handle_t* handle, const char* path, uint64_t* generation);

/**
 * Makes the inventory what it was when `generation` was its newest: takes back every change after it, all or
 * none, and forgets that they happened. Meant for copies made by zym_db_snapshot(). What the journal leaves
 * out (columns that change while nothing happens to the machine) stays as it is.
 *
 * @param handle      of the inventory
 * @param generation  the one to go back to
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null handle; ZYM_DB_STATUS_ERROR when a transaction is open on
 *         this thread, for a database without a journal, for a generation that is newer than the inventory or
 *         older than what its journal reaches back to; a status of the client's own when the inventory cannot
 * be read or written
 */
int zym_db_rewind(_zym_db_handle_t* handle, uint64_t generation);

/**
 * Adds `column` with the `size` bytes at `data`, which are copied, to the value set `values`.
 *
 * @return 0; ZYM_DB_STATUS_INVALID_PARAM for a null pointer or a negative size.
 */
int zym_db_content_put_blob(zym_db_content_values_t* values, const char* column, const void* data, int size);

/**
 * Whether the process may make databases. What is open stays open. Any thread may call it.
 *
 * @param allowed  0: opening an inventory that is missing or empty fails and makes no file, and a missing
 *                 property database counts as an empty one that cannot be written; one that nobody else has
 *                 open is read without a file being made beside it, until it is written. Else, and unless
 * this is called, a missing or empty file becomes a new database.
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
