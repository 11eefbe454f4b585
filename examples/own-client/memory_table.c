#include "memory_table.h"

#include <ctype.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

const cell* find_cell(const row* where, const char* column) {
  for (size_t i = 0; i < where->count; ++i)
    if (strcmp(where->cells[i].column, column) == 0) return &where->cells[i];
  return NULL;
}

bool set_cell(row* where, const cell* value) {
  cell* const present = (cell*)find_cell(where, value->column);
  if (present != NULL) {
    *present = *value;
    return true;
  }
  cell* const larger = realloc(where->cells, (where->count + 1) * sizeof *larger);
  if (larger == NULL) return false;
  where->cells = larger;
  where->cells[where->count++] = *value;
  return true;
}

bool add_row(rows* where, const row* copied) {
  row* const larger = realloc(where->items, (where->count + 1) * sizeof *larger);
  if (larger == NULL) return false;
  where->items = larger;
  row added = *copied;
  added.cells = malloc(copied->count * sizeof *added.cells + 1);
  if (added.cells == NULL) return false;
  if (copied->count > 0) memcpy(added.cells, copied->cells, copied->count * sizeof *added.cells);
  where->items[where->count++] = added;
  return true;
}

void free_row(row* freed) {
  free(freed->cells);
}

void free_rows(rows* freed) {
  for (size_t i = 0; i < freed->count; ++i) free_row(&freed->items[i]);
  free(freed->items);
}

/* ---- Conditions */

/* What is left of a condition, and of its parameters. */
typedef struct reader {
  const char* text;
  const _zym_db_param_t* params;
  int nparams;
} reader;

static void skip_blanks(reader* from) {
  while (isspace((unsigned char)*from->text)) ++from->text;
}

static bool take(reader* from, const char* word) {
  skip_blanks(from);
  const size_t length = strlen(word);
  if (strncasecmp(from->text, word, length) != 0) return false;
  from->text += length;
  return true;
}

/* Copies the first `length` characters and goes on behind them. */
static bool take_text(reader* from, size_t length, char* text, size_t size) {
  if (length == 0 || length >= size) return false;
  memcpy(text, from->text, length);
  text[length] = '\0';
  from->text += length;
  return true;
}

static bool take_word(reader* from, char* word, size_t size) {
  size_t length = 0;
  skip_blanks(from);
  while (isalnum((unsigned char)from->text[length]) || from->text[length] == '_') ++length;
  return take_text(from, length, word, size);
}

static bool take_quoted(reader* from, cell* value) {
  const char quote = *from->text++;
  const char* const end = strchr(from->text, quote);
  if (end == NULL) return false;
  value->kind = CELL_TEXT;
  value->text[0] = '\0';
  const size_t length = (size_t)(end - from->text);
  if (length > 0 && !take_text(from, length, value->text, sizeof value->text)) return false;
  ++from->text;
  return true;
}

static bool take_parameter(reader* from, cell* value) {
  if (from->nparams == 0) return false;
  value->kind = CELL_NUMBER;
  value->number =
      (int64_t)(from->params->type == 2 ? (uint16_t)from->params->value : (uint32_t)from->params->value);
  ++from->params;
  --from->nparams;
  return true;
}

static bool take_number(reader* from, cell* value) {
  char* end = NULL;
  value->kind = CELL_NUMBER;
  value->number = strtoll(from->text, &end, 10);
  if (end == from->text) return false;
  from->text = end;
  return true;
}

static bool take_value(reader* from, cell* value) {
  skip_blanks(from);
  if (*from->text == '"' || *from->text == '\'') return take_quoted(from, value);
  return take(from, "?") ? take_parameter(from, value) : take_number(from, value);
}

static bool are_equal(const cell* stored, const cell* wanted) {
  if (stored->kind == CELL_TEXT && wanted->kind == CELL_TEXT) return strcmp(stored->text, wanted->text) == 0;
  if (stored->kind == CELL_NUMBER && wanted->kind == CELL_TEXT)
    return stored->number == strtoll(wanted->text, NULL, 10);
  return stored->kind == CELL_NUMBER && stored->number == wanted->number;
}

/* One comparison. A NULL meets none. */
static int meets_one(reader* from, const row* judged) {
  cell wanted = {0};
  if (!take_word(from, wanted.column, sizeof wanted.column)) return -1;
  const bool differs = take(from, "!=");
  if ((!differs && !take(from, "=")) || !take_value(from, &wanted)) return -1;
  const cell* const stored = find_cell(judged, wanted.column);
  if (stored == NULL || stored->kind == CELL_NULL) return 0;
  return are_equal(stored, &wanted) != differs;
}

int meets(const row* judged, const char* table, const char* condition, const _zym_db_param_t* params,
          int nparams) {
  int met = strcmp(judged->table, table) == 0;
  if (condition == NULL) return met;
  reader from = {condition, params, nparams};
  do {
    const int one = meets_one(&from, judged);
    if (one < 0) return -1;
    met = met && one;
  } while (take(&from, "AND "));
  skip_blanks(&from);
  return *from.text == '\0' ? met : -1;
}
