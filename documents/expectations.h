// What a server should be, as people keep it in a file: which parts, where, of which firmware, and how they
// are.
//
// The file is TOML: a table for each class, comments wherever they are wanted, and a part a line, so that a
// change of one part is a change of one line.
#ifndef ZYMDB_DOCUMENTS_EXPECTATIONS_H
#define ZYMDB_DOCUMENTS_EXPECTATIONS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "documents/document.h"
#include "records/arrangement.h"

namespace zymdb::documents {

// The shape of a version never changes.
inline constexpr int kExpectationsFormatVersion = 1;

// What a link is told by: how it is, and what is in use of it.
inline constexpr std::string_view kLinkStateField = "LinkState";
inline constexpr std::string_view kLinkField = "Link";

using records::Condition;
using Conditions = std::vector<records::FieldCondition>;

enum class Aspect : uint8_t {
  kCount,      // how many parts
  kHealthy,    // no part deserves a look
  kFullLinks,  // every link is as wide and fast as both of its ends can do
  kUnique,     // no serial number or address twice
  kEveryPart,  // conditions that every part meets
  kAtPlace,    // parts of one place; none where it is to be empty
  kOfModel,    // how many parts of a model, and conditions that they meet
};

struct Expectation {
  Aspect aspect = Aspect::kCount;
  std::string part_class;
  std::string name = {};                // the place or the model
  std::optional<Condition> count = {};  // of parts
  std::vector<Conditions> parts = {};   // what each part at a place meets; of other aspects one for all parts
  std::vector<std::string> except = {};  // places, of kUnique the values, that are not looked at
};

// Without its class: "count", "at Bay 1".
std::string title_of(const Expectation& expectation);

// In the order of the text. Throws SourceError, with `name` and the line for the source, for what is no TOML,
// of a newer version, or names what no inventory has; also where nothing is expected at all.
std::vector<Expectation> parse_expectations(std::string_view text, const std::string& name,
                                            const std::vector<RecordType>& types);

}  // namespace zymdb::documents

#endif
