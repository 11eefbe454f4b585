// What became of the parts of an inventory.
#ifndef ZYMDB_DOCUMENTS_DIFFERENCE_H
#define ZYMDB_DOCUMENTS_DIFFERENCE_H

#include <string>
#include <vector>

#include "documents/document.h"
#include "documents/matching.h"

namespace zymdb::documents {

enum class ChangeKind : uint8_t {
  kAdded,
  kRemoved,
  kMoved,     // the same part in another place
  kReplaced,  // another part in the same place
  kChanged,   // the same part in the same place, but not as it was
};

const char* name_of(ChangeKind kind);

struct FieldChange {
  FieldInfo field;
  Value before;
  Value after;
};

// What became of one part. It holds all that it tells.
struct Change {
  ChangeKind kind = ChangeKind::kChanged;
  std::string part_class;  // the name of the class
  std::string place;       // where the part is; of one that is gone, where it was
  std::string former_place;       // of a part that moved
  std::string description;        // of the part; of one that is gone, what it was
  std::string former_description; // of what was replaced
  std::vector<FieldChange> fields;
  Part before, after;  // all values; empty for a part that was not there, or is not
};

struct DifferenceOptions {
  MatchBy by = MatchBy::kIdentity;
  bool with_volatile = false;
};

// In the order of the classes; only of classes that both have. Fields that say where the inventory has a record
// never count; with MatchBy::kPlace neither do those that tell parts apart.
std::vector<Change> difference(const Document& before, const Document& after,
                               const DifferenceOptions& options = {});

// For people: where it happened ("slot 1 -> slot 2" of a part that moved), and what ("old model (A1) -> new model
// (B2)", "LINK up -> down").
std::string where(const Change& change);
std::string what(const Change& change);

// One line, without its end: "replaced  drives  bay 3  old model (A1) -> new model (B2)".
std::string text_of(const Change& change);

}  // namespace zymdb::documents

#endif
