// What the tests know of the listings, beside what the tool says of them itself.
#ifndef ZYMDB_TESTS_TOOL_LISTING_CASE_H
#define ZYMDB_TESTS_TOOL_LISTING_CASE_H

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "tool/run_tool.h"

namespace zymdb::test {

using Json = nlohmann::ordered_json;

struct ListingCase {
  std::string name;
  std::string header;  // the public header that declares the record
  std::string record;
};

inline std::ostream& operator<<(std::ostream& stream, const ListingCase& listing) {
  return stream << listing.name;
}

inline const ListingCase kListings[] = {
    {"processors", "zymdb_cpu_mem.h", "_ZYMDB_Processor"},
    {"adapters", "zymdb_pci.h", "_ZYMDB_PCI_Adapter"},
    {"functions", "zymdb_pci.h", "_ZYMDB_PCI_Generic"},
    {"memory", "zymdb_cpu_mem.h", "_ZYMDB_Memory"},
};

// The fields of the record in the order of its declaration.
std::vector<std::string> declared_fields(const ListingCase& listing);

// All column headings, in the order of the table with all columns.
std::vector<std::string> headings(const Workplace& workplace, const ListingCase& listing);

// One column of the table, without its heading.
std::vector<std::string> column(const Workplace& workplace, const ListingCase& listing,
                                const std::string& name);

// The array that --json prints, after its frame has been checked.
Json records(const Workplace& workplace, const ListingCase& listing);

// A value of JSON as the cell of a table shows it, apart from how numbers are written.
bool shows(const std::string& cell, const Json& value);

}  // namespace zymdb::test

#endif
