// Whether a server is what it should be.
#ifndef ZYMDB_DOCUMENTS_CHECK_H
#define ZYMDB_DOCUMENTS_CHECK_H

#include <string>
#include <vector>

#include "documents/expectations.h"

namespace zymdb::documents {

struct Failure {
  std::string place;  // empty of what is told of a class as a whole
  std::string expected;
  std::string found;
  std::string identity = {};  // that several parts have
};

// What came of one expectation.
struct Verdict {
  std::string part_class;
  std::string title;  // of the expectation
  std::vector<Failure> failures;
};

// The classes that are spoken of and that the document lacks: of these nothing can be said.
std::vector<std::string> missing_classes(const std::vector<Expectation>& expectations,
                                         const Document& document);

// One verdict for each expectation of a class that the document has, in their order. Positions without a part
// are no parts.
std::vector<Verdict> check(const std::vector<Expectation>& expectations, const Document& document);

size_t failure_count(const std::vector<Verdict>& verdicts);

// "Bay 1: expected FIRMWARE >= 2.0, found 1.9".
std::string text_of(const Failure& failure);

// Whether somebody who names this place, or this model, means the part: all of it as tables show it, or one
// of its fields, in any case.
bool is_at(const PartClass& of, const Part& part, std::string_view place);
bool is_of_model(const PartClass& of, const Part& part, std::string_view model);

}  // namespace zymdb::documents

#endif
