/* Rows in memory: cells by name, tables by name, and conditions on them. */
#ifndef MEMORY_TABLE_H
#define MEMORY_TABLE_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <zymdb_db.h>

enum { NAME_SIZE = 64, TEXT_SIZE = 256 };

typedef struct cell {
  char column[NAME_SIZE];
  enum { CELL_NULL, CELL_NUMBER, CELL_TEXT } kind;
  int64_t number;
  char text[TEXT_SIZE];
} cell;

typedef struct row {
  char table[NAME_SIZE];
  cell* cells;
  size_t count;
} row;

typedef struct rows {
  row* items;
  size_t count;
} rows;

/* The cell of this name; null when there is none. */
const cell* find_cell(const row* where, const char* column);

/* Sets a cell, in the place of one of the same name. False without memory. */
bool set_cell(row* where, const cell* value);

/* Adds a copy of a row. False without memory. */
bool add_row(rows* where, const row* copied);

void free_row(row* freed);
void free_rows(rows* freed);

/* Whether a row is one of `table` and meets a condition: `NAME=VALUE` or `NAME!=VALUE`, joined by AND. A
 * VALUE is a number, a quoted text or "?", which takes the next parameter. Null is met by every row. 1 or 0;
 * -1 for a condition that is not of this form. */
int meets(const row* judged, const char* table, const char* condition, const _zym_db_param_t* params,
          int nparams);

#endif
