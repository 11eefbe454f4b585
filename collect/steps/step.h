// A step of a collection: one class of hardware.
#ifndef ZYMDB_COLLECT_STEPS_STEP_H
#define ZYMDB_COLLECT_STEPS_STEP_H

#include <functional>
#include <utility>
#include <vector>

#include "collect/rows/table_content.h"
#include "collect/steps/survey.h"
#include "collect/write/former_machine.h"

namespace zymdb::collect {

// Makes the rows of a class. It is called within the collection's transaction, and may read the inventory.
using RowMaker = std::function<std::vector<TableContent>(const FormerMachine& former)>;

// Reads the sources of a class, before the transaction begins. Nothing: no source tells of the class, whose
// rows stay as they are. A class of rows about functions always has them made once functions are told of, so
// that the rows of functions that are gone go. What RowMaker refers to of the survey lives as long as it.
using Step = RowMaker (*)(const Survey& survey);

// A class whose rows depend on nothing in the inventory.
inline RowMaker always(std::vector<TableContent> tables) {
  return [tables = std::move(tables)](const FormerMachine&) { return tables; };
}
inline RowMaker always(TableContent table) {
  return always(std::vector<TableContent>{std::move(table)});
}

}  // namespace zymdb::collect

#endif
