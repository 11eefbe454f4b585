// Documents as comma-separated values, one file for each class.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_CSV_H
#define ZYMDB_DOCUMENTS_DOCUMENT_CSV_H

#include <string>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

struct CsvFile {
  std::string name;  // "drives.csv"
  std::string content;
};

// The first line has the keys of the fields; then a line for each part, with decimal numbers, and nothing where
// nobody knows. Broken UTF-8 becomes U+FFFD.
std::vector<CsvFile> to_csv(const Document& document);

}  // namespace zymdb::documents

#endif
