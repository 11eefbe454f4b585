// Which part of one inventory is which part of another.
#ifndef ZYMDB_DOCUMENTS_MATCHING_H
#define ZYMDB_DOCUMENTS_MATCHING_H

#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

struct Pair {
  const Part* before = nullptr;  // null for a part that is new
  const Part* after = nullptr;   // null for one that is gone
};

enum class MatchBy { kIdentity, kPlace };

// Every part of both, vacant positions aside, paired with its other self or alone. A part is known by a serial
// number or whatever else tells it apart, wherever it is; one without any by its place and model, then by its
// model alone. What is left in one place has been replaced. By place alone where two machines are compared that
// have no part in common.
std::vector<Pair> match(const PartClass& before, const PartClass& after, MatchBy by);

}  // namespace zymdb::documents

#endif
