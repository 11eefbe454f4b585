// What a record is, said once: its fields, what they mean, when they are known and how all records are
// listed. Tables, JSON and whatever else is printed come from this alone.
//
// A record type is a constexpr array of Field<Record> and a function that lists the records; describe() hides
// the record's own type, so that all that prints is compiled once. Nothing here knows a command line, a JSON
// library or a screen.
#ifndef ZYMDB_RECORDS_RECORD_H
#define ZYMDB_RECORDS_RECORD_H

#include <functional>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "records/value.h"

namespace zymdb::records {

// Numbers stand to the right; long texts give way where there is no room for all.
enum class Kind : uint8_t { kNumber, kText, kLongText };

// What a field is to the part that it describes.
enum class Role : uint8_t {
  kStable,    // stays as long as the part is what it is
  kIdentity,  // tells parts apart: a serial number, an address burnt in
  kModel,     // says what kind of part it is: model, part number
  kPlace,     // says where the part is
  kState,     // how the part is: a link that is up, its health
  kVolatile,  // changes while nothing happens: load, temperature
  kVersion,   // of its firmware or software: another one after an update
  kRow,       // says where the inventory has it, and nothing about the part
};

// What else a field tells of its part, for forms of documents that have a place of their own for it.
enum class Tells : uint8_t {
  kNothing,
  kName,
  kMaker,
  kVersion,
  kFirmware,       // the version of the firmware that is in the part
  kPosition,       // slot, bay or board
  kFunction,       // the address of the PCI function that the part belongs to
  kOwnFunction,    // of the one that it is
  kFirstFunction,  // of the first one that it has
  kCollected,      // when the part was collected, in seconds since 1970
};

// What records of a type are.
enum class Nature : uint8_t {
  kMachine,  // the whole
  kDevice,   // what can be taken out, or is soldered in
  kFirmware,
  kLogical,  // settings, and what exists on the wire only
};

// Whether a table has the column when nobody says which.
enum class Shown : uint8_t { kNo, kByDefault };

// What deserves a look.
enum class Attention : uint8_t { kNone, kAbsent, kWarning };

struct FieldInfo {
  const char* key;      // in JSON: the library's own name of the field where it has one
  const char* heading;  // of a column
  const char* meaning;  // one line
  const char* unit = "";
  Kind kind = Kind::kText;
  Role role = Role::kStable;
  Shown shown = Shown::kNo;
  unsigned hex_digits = 0;  // 0: written in decimal
  bool is_derived = false;  // made of other fields
  bool is_amount = false;   // a number that counts or measures, rather than a code
  Tells tells = Tells::kNothing;
  Attention (*judge)(const Value&) = nullptr;  // what a value that is known deserves; null: nothing

  // Numbers of more than 53 bits lose some in readers that keep numbers as floating point.
  constexpr bool is_wide_identifier() const { return hex_digits > 8; }
};

template <class Record>
struct Field {
  FieldInfo info;
  Value (*read)(const Record&);
  bool (*is_known)(const Record&) = nullptr;  // null: always
  Attention (*attention)(const Record&) = nullptr;
  std::optional<uint64_t> unknown_number = {};  // stands for "not known"
  const char* unknown_text = nullptr;           // the same

  constexpr Field shown() const { return with(&FieldInfo::shown, Shown::kByDefault); }
  constexpr Field unit(const char* text) const { return with(&FieldInfo::unit, text).amount(); }
  constexpr Field amount() const { return with(&FieldInfo::is_amount, true); }
  constexpr Field tells(Tells what) const { return with(&FieldInfo::tells, what); }
  constexpr Field hex(unsigned digits) const { return with(&FieldInfo::hex_digits, digits); }
  constexpr Field long_text() const { return with(&FieldInfo::kind, Kind::kLongText); }
  constexpr Field identity() const { return with(&FieldInfo::role, Role::kIdentity); }
  constexpr Field place() const { return with(&FieldInfo::role, Role::kPlace); }
  constexpr Field model() const { return with(&FieldInfo::role, Role::kModel); }
  constexpr Field state() const { return with(&FieldInfo::role, Role::kState); }
  constexpr Field changing() const { return with(&FieldInfo::role, Role::kVolatile); }
  constexpr Field row() const { return with(&FieldInfo::role, Role::kRow); }
  constexpr Field version() const { return with(&FieldInfo::role, Role::kVersion); }
  constexpr Field judged(Attention (*judge)(const Value&)) const { return with(&FieldInfo::judge, judge); }
  constexpr Field number() const { return with(&FieldInfo::kind, Kind::kNumber); }

  constexpr Field unknown_at(uint64_t number) const {
    Field changed = *this;
    changed.unknown_number = number;
    return changed;
  }
  constexpr Field zero_is_unknown() const { return unknown_at(uint64_t{0}); }
  constexpr Field unknown_at(const char* text) const {
    Field changed = *this;
    changed.unknown_text = text;
    return changed;
  }
  constexpr Field known_if(bool (*condition)(const Record&)) const {
    Field changed = *this;
    changed.is_known = condition;
    return changed;
  }
  // What other fields of the record say of it; what it says itself is judged().
  constexpr Field noted(Attention (*of)(const Record&)) const {
    Field changed = *this;
    changed.attention = of;
    return changed;
  }

  Value value(const Record& record) const {
    if (is_known != nullptr && !is_known(record)) return {};
    Value value = stored_or_read(record);
    return stands_for_unknown(value) ? Value() : value;
  }

 private:
  template <class Part>
  constexpr Field with(Part FieldInfo::*part, Part content) const {
    Field changed = *this;
    changed.info.*part = content;
    return changed;
  }

  bool stands_for_unknown(const Value& value) const {
    if (const auto* const number = std::get_if<uint64_t>(&value)) return *number == unknown_number;
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr && unknown_text != nullptr && *text == unknown_text;
  }

  // Records that know their row tell a NULL from a 0, and numbers that their fields have no room for.
  Value stored_or_read(const Record& record) const {
    if constexpr (requires { record.stored(info.key); }) {
      if (const Value* const stored = info.is_derived ? nullptr : record.stored(info.key)) return *stored;
    }
    return read(record);
  }
};

// A value made of the record for people to read, with a key like the fields'.
template <class Record>
constexpr Field<Record> derived(const char* key, const char* heading, const char* meaning,
                                Value (*read)(const Record&)) {
  return {.info = {.key = key, .heading = heading, .meaning = meaning, .is_derived = true}, .read = read};
}

// A field of the record, under its own name; its type decides between text and number. Packed records are
// read too.
#define ZYMDB_RECORD_FIELD(RECORD, MEMBER, HEADING, MEANING)                                      \
  zymdb::records::Field<RECORD> {                                                                 \
    .info = {.key = #MEMBER,                                                                      \
             .heading = HEADING,                                                                  \
             .meaning = MEANING,                                                                  \
             .kind = std::is_integral_v<decltype(RECORD::MEMBER)> ? zymdb::records::Kind::kNumber \
                                                                  : zymdb::records::Kind::kText}, \
    .read = [](const RECORD& record) { return zymdb::records::value_of(record.MEMBER); }          \
  }

// What the value says by itself, whichever inventory or document it was read from.
inline Attention attention_of(const FieldInfo& field, const Value& value) {
  return field.judge != nullptr && is_known(value) ? field.judge(value) : Attention::kNone;
}

struct Cell {
  Value value;
  Attention attention = Attention::kNone;
};

// Records as rows of values.
struct Sheet {
  std::vector<FieldInfo> fields;
  std::vector<std::vector<Cell>> rows;
  std::vector<std::optional<size_t>> parents =
      {};  // of the rows, where records have any: an earlier row each
};

// Which of a record's fields, by index, in the order wanted.
using Selection = std::vector<size_t>;

template <class Record>
Sheet make_sheet(std::span<const Field<Record>> fields, const std::vector<Record>& records,
                 const Selection& selection) {
  Sheet sheet;
  for (const size_t index : selection) sheet.fields.push_back(fields[index].info);
  for (const auto& record : records) {
    if constexpr (requires { record.parent; }) sheet.parents.push_back(record.parent);
    auto& row = sheet.rows.emplace_back();
    for (const size_t index : selection) {
      const auto& field = fields[index];
      const Value value = field.value(record);
      row.push_back({value, field.attention ? field.attention(record) : attention_of(field.info, value)});
    }
  }
  return sheet;
}

// All fields of some records.
template <class Record, size_t N>
Sheet make_sheet(const Field<Record> (&fields)[N], const std::vector<Record>& records) {
  Selection all(N);
  std::iota(all.begin(), all.end(), size_t{0});
  return make_sheet<Record>(std::span(fields), records, all);
}

struct RecordType {
  std::string name;         // plural: of the listing, and the array's key in JSON
  std::string description;  // one line
  std::vector<FieldInfo> fields;
  std::function<Sheet(const Selection&)> list;  // all records; throws DatabaseError when not all can be read
  Nature nature = Nature::kDevice;

  RecordType as(Nature what) && {
    nature = what;
    return std::move(*this);
  }
};

// `fields` must outlive the type.
template <class Record, size_t N>
RecordType describe(std::string name, std::string description, const Field<Record> (&fields)[N],
                    std::function<std::vector<Record>()> list) {
  RecordType type{.name = std::move(name), .description = std::move(description), .fields = {}, .list = {}};
  for (const auto& field : fields) type.fields.push_back(field.info);
  type.list = [&fields, list = std::move(list)](const Selection& selection) {
    return make_sheet<Record>(fields, list(), selection);
  };
  return type;
}

Selection all_fields(const RecordType& type);
Selection default_fields(const RecordType& type);

// The field of this heading or key as it is printed; else of this heading, or else of this key, in any case:
// a code's key may be the heading of the text that says the same.
std::optional<size_t> find_field(const RecordType& type, std::string_view name);

// For people: nothing for what is not known, "0x0010de" for a number with digits to be shown.
std::string text_of(const FieldInfo& field, const Value& value);

}  // namespace zymdb::records

#endif
