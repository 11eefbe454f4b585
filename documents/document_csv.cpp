#include "documents/document_csv.h"

#include "common/csv.h"
#include "documents/part_names.h"

namespace zymdb::documents {
namespace {

using Fields = std::vector<std::string>;

std::string text_of(const Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return utf8_text(*text);
  if (const auto* const number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  const auto* const number = std::get_if<uint64_t>(&value);
  return number != nullptr ? std::to_string(*number) : "";
}

std::string rows_of(const PartClass& of) {
  Fields keys;
  for (const FieldInfo& field : of.fields) keys.emplace_back(field.key);
  std::string rows = csv_row(keys);
  for (const Part& part : of.parts) {
    Fields fields;
    for (const Value& value : part) fields.push_back(text_of(value));
    rows += csv_row(fields);
  }
  return rows;
}

}  // namespace

std::vector<CsvFile> to_csv(const Document& document) {
  std::vector<CsvFile> files;
  for (const PartClass& of : document.classes) files.push_back({of.name + ".csv", rows_of(of)});
  return files;
}

}  // namespace zymdb::documents
