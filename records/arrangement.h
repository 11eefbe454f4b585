// Which rows of a listing, and in which order.
#ifndef ZYMDB_RECORDS_ARRANGEMENT_H
#define ZYMDB_RECORDS_ARRANGEMENT_H

#include <vector>

#include "records/condition.h"
#include "records/record.h"

namespace zymdb::records {

struct FieldCondition {
  size_t field = 0;
  Condition condition;
};

struct SortKey {
  size_t field = 0;
  bool is_descending = false;
};

struct Arrangement {
  std::vector<FieldCondition> conditions;  // a row is there that meets all of them
  std::vector<SortKey> order;              // the first that tells two rows apart decides

  bool is_empty() const { return conditions.empty() && order.empty(); }
};

// The records so chosen and ordered: numbers as numbers, what is not known last, and rows that nothing tells
// apart as the inventory has them. Rows that are not as the inventory has them have no parents.
Sheet list_arranged(const RecordType& type, const Arrangement& arrangement, const Selection& columns);

}  // namespace zymdb::records

#endif
