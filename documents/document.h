// A whole inventory, or some classes of it, as values: what is compared, kept, checked and handed out. Nothing
// in it refers to the inventory that it came from.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_H
#define ZYMDB_DOCUMENTS_DOCUMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "records/record.h"

namespace zymdb::documents {

using records::FieldInfo;
using records::RecordType;
using records::Value;

// One record: its values in the order of the class's fields.
using Part = std::vector<Value>;

// All records of one type.
struct PartClass {
  std::string name;
  std::vector<FieldInfo> fields;
  std::vector<Part> parts;

  // The index of a field; nothing for a key that the class lacks.
  std::optional<size_t> field(std::string_view key) const;

  // Whether a position has no part in it: an empty socket.
  bool is_vacant(const Part& part) const;

  // The parts that are there, which belong to the class.
  std::vector<const Part*> present() const;

  // Where the part is, as people call it: the first of its places.
  std::string place(const Part& part) const;

  // What kind of part it is, as tables show it.
  std::string model(const Part& part) const;

  // What it is: model and identity, as tables show them.
  std::string description(const Part& part) const;
};

struct Document {
  std::optional<uint64_t> generation;
  std::vector<PartClass> classes;

  // Null for a class that the document lacks.
  const PartClass* find(std::string_view name) const;

  // Whether nothing has been collected.
  bool is_empty() const;
};

// The value as every form of a document has it: numbers without a sign where they have none, wide identifiers
// as texts.
Value normalized(const FieldInfo& field, const Value& value);

PartClass read_class(const RecordType& type);

// The open inventory. Throws DatabaseError when not all of it can be read.
Document read_document(const std::vector<RecordType>& types);

}  // namespace zymdb::documents

#endif
