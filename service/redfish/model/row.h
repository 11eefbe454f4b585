// One part of a document, read by the keys of its fields.
#ifndef ZYMDB_SERVICE_REDFISH_MODEL_ROW_H
#define ZYMDB_SERVICE_REDFISH_MODEL_ROW_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "documents/document.h"

namespace zymdb::service::redfish {

class Row {
 public:
  Row(const documents::PartClass& of, size_t index) : of_(&of), index_(index) {}

  const documents::PartClass& of() const { return *of_; }
  size_t index() const { return index_; }
  const documents::Part& part() const { return of_->parts[index_]; }
  bool is_vacant() const { return of_->is_vacant(part()); }

  // Nothing where nobody knows, or where the class has no such field.
  const documents::Value& value(std::string_view key) const;
  // Also of a wide identifier, which is a text.
  std::optional<uint64_t> number(std::string_view key) const;
  // Empty where nothing is known, or a number is.
  std::string text(std::string_view key) const;

  // Whether one of these fields deserves a look; nothing where none of them is known.
  std::optional<bool> is_warned(std::initializer_list<std::string_view> keys) const;

 private:
  const documents::PartClass* of_;
  size_t index_;
};

}  // namespace zymdb::service::redfish

#endif
