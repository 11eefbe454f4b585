// Conditions that were translated before.
//
// A caller's conditions are nearly always those before with other numbers and texts in them: "FunKey=12",
// "FunKey=13". What such a condition means is looked up by the text between its values.
#ifndef ZYMDB_PLATFORM_CLIENT_DIALECT_KNOWN_CONDITIONS_H
#define ZYMDB_PLATFORM_CLIENT_DIALECT_KNOWN_CONDITIONS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "client/dialect/dialect.h"

namespace zymdb::client {

class KnownConditions {
 public:
  // Translates the condition of a statement on `table`, as translate_condition() would. False: it is not
  // known.
  bool recall(const Catalog& catalog, const Table& table, std::string_view text, Translation& out);

  // Remembers what the condition that was not known means.
  void note(const Translation& translation);

 private:
  static constexpr size_t kPlaces = 16;
  static constexpr uint8_t kNoValue = 0xFF;

  // A condition but for its values. Where each of its arguments comes from: a value, or from none.
  struct Known {
    uint64_t catalog = 0;
    const Table* table = nullptr;
    std::string pattern;
    std::string shape;
    std::vector<Argument> arguments;
    std::vector<uint8_t> sources;
    size_t tail = 0;
    bool grouped = false;
    bool bare = true;
  };
  struct Value {
    std::string_view text;
    int64_t integer = 0;
    bool is_number = false;
  };

  bool cut(std::string_view text);
  bool add_number(std::string_view digits, std::string_view after);
  bool find_sources(const std::vector<Argument>& arguments, std::vector<uint8_t>& sources) const;
  bool is_value(const Argument& argument, size_t place) const;

  std::array<Known, kPlaces> places_;
  // Of the condition that was looked for last.
  uint64_t catalog_ = 0;
  const Table* table_ = nullptr;
  std::string pattern_;
  std::vector<Value> values_;
  Known* place_ = nullptr;  // null where it cannot be known
};

}  // namespace zymdb::client

#endif
