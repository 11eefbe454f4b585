/*
 * The inventory and the records of records/, as the Python package calls them.
 *
 * A record's values cross over as the JSON that the tool prints: what is unknown, how wide identifiers are
 * written and what becomes of bytes that are no text is decided once, in records/. Functions that take a
 * status answer a text in UTF-8, which access_release() releases: what was asked for, or with a status other
 * than 0 the reason in one line. The text is null where there was no memory for one.
 *
 * Any thread may call any of them; the caller sees to it that nobody reads while the inventory is opened or
 * closed.
 */
#ifndef ZYMDB_PYTHON_INVENTORY_ACCESS_H
#define ZYMDB_PYTHON_INVENTORY_ACCESS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The listings with their fields: { "listings": [ { "name", "description", "takes_slot", "fields": [ { "key",
 * "meaning", "unit", "type" } ] } ] }. A type is "int" or "str". */
char* access_describe(int* status);

/* All records of a listing, as an object with an array under its name. `slot` counts for those that take one.
 */
char* access_list(const char* listing, int slot, int* status);

/* Opens the inventory that ZYMDB_INVENTORY names, unless it is open. Makes none that is not there. */
char* access_open(int* status);

/* Closes it, for all threads; whether there is anything to close. */
void access_close(void);
int access_is_open(void);

/* The generation in decimal; an empty text for an inventory without one. */
char* access_generation(int* status);

/* Whether the file is a snapshot; writes the database in it to a new file. */
int access_is_snapshot(const char* path);
char* access_unpack(const char* snapshot, const char* database, int* status);

void access_release(char* text);

#ifdef __cplusplus
}
#endif

#endif
