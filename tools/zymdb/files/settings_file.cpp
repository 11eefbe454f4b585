#include "files/settings_file.h"

#include <algorithm>
#include <bitset>
#include <cstring>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>

#include "common/source_file.h"

namespace zymdb::tool {
namespace {

using records::kSettingFields;
using records::SettingField;
using records::SettingType;

constexpr size_t kFieldCount = std::size(kSettingFields);
using FieldSet = std::bitset<kFieldCount>;

// Where the parser stands. It may have read one character beyond a number, which is why the last one does not
// count.
class Position {
 public:
  void pass(char c) {
    if (last_ == '\n') ++line_;
    last_ = c;
  }
  size_t line() const { return line_; }

 private:
  size_t line_ = 1;
  char last_ = '\0';
};

// The file's characters, as the parser takes them.
class Cursor {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  Cursor(const char* at, Position* position) : at_(at), position_(position) {}

  reference operator*() const { return *at_; }
  Cursor& operator++() {
    position_->pass(*at_++);
    return *this;
  }
  Cursor operator++(int) {
    const Cursor before = *this;
    ++*this;
    return before;
  }
  bool operator==(const Cursor& other) const { return at_ == other.at_; }

 private:
  const char* at_;
  Position* position_;
};

size_t index_of_field(const std::string& name) {
  const auto* const found = std::find_if(std::begin(kSettingFields), std::end(kSettingFields),
                                         [&](const auto& field) { return name == field.field.info.key; });
  return static_cast<size_t>(found - std::begin(kSettingFields));
}

const size_t kIdField = index_of_field("SettingID");
const size_t kFunctionField = index_of_field("PfaKey");

// Keys that the listing prints beside the fields, so that its array is taken back as it is.
bool is_derived(const std::string& name) {
  static const records::RecordType type = records::settings();
  return std::ranges::any_of(type.fields,
                             [&](const auto& field) { return field.is_derived && name == field.key; });
}

// What keeps a text from being stored as it is, or nothing. Statements hold texts between double quotes.
std::string objection_to(const std::string& text, const SettingField& field) {
  if (text.size() >= field.size) return "longer than " + std::to_string(field.size - 1) + " bytes";
  if (text.find('\0') != std::string::npos) return "a text with a NUL cannot be stored";
  if (text.find('"') != std::string::npos) return "a text with a double quote cannot be stored";
  return {};
}

// What the JSON parser reports, made into settings.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  Builder(const std::string& path, const Position& position) : path_(path), position_(position) {}

  std::vector<SettingRecord> take() { return std::move(settings_); }

  bool start_array(size_t) override {
    if (depth_ != 0) refuse("an array is not expected here");
    ++depth_;
    return true;
  }
  bool end_array() override { return true; }

  bool start_object(size_t) override {
    if (depth_ == 0) refuse("an array of settings is expected");
    if (depth_ != 1) refuse("an object is not expected here");
    ++depth_;
    given_.reset();
    first_line_ = position_.line();
    settings_.emplace_back();
    return true;
  }

  bool key(std::string& name) override {
    key_ = name;
    key_line_ = position_.line();
    is_passed_over_ = is_derived(name);
    if (is_passed_over_) return true;
    field_ = index_of_field(name);
    if (field_ == kFieldCount) refuse("no such key");
    if (given_.test(field_)) refuse("is given twice");
    given_.set(field_);
    return true;
  }

  bool end_object() override {
    --depth_;
    for (const size_t required : {kIdField, kFunctionField}) require(required);
    key_.clear();
    is_passed_over_ = false;
    return true;
  }

  bool null() override {
    if (is_passed_over_) return true;
    require_value(SettingType::kText);
    if (field_ == kIdField) remember_id({});
    return true;
  }
  bool boolean(bool) override { return is_passed_over_ || refuse_type(); }
  bool number_float(double, const std::string&) override { return is_passed_over_ || refuse_type(); }
  bool binary(nlohmann::json::binary_t&) override { return refuse_type(); }

  bool number_integer(int64_t number) override {
    if (is_passed_over_) return true;
    require_value(SettingType::kSigned);
    if (number < std::numeric_limits<int32_t>::min()) refuse("the number is too small");
    store(static_cast<int32_t>(number));
    return true;
  }
  bool number_unsigned(uint64_t number) override {
    if (is_passed_over_) return true;
    if (depth_ != 2 || type() == SettingType::kText) return refuse_type();
    const bool is_signed = type() == SettingType::kSigned;
    if (number > (is_signed ? uint64_t{INT32_MAX} : uint64_t{UINT32_MAX})) refuse("the number is too large");
    store(static_cast<uint32_t>(number));
    return true;
  }

  bool string(std::string& text) override {
    if (is_passed_over_) return true;
    require_value(SettingType::kText);
    const auto& field = kSettingFields[field_];
    if (const auto objection = objection_to(text, field); !objection.empty()) refuse(objection);
    std::memcpy(place(), text.c_str(), text.size() + 1);
    if (field_ == kIdField) remember_id(text);
    return true;
  }

  bool parse_error(size_t, const std::string&, const nlohmann::json::exception& error) override {
    // The parser's own line counts the character that it looked ahead to; what follows the place is the
    // reason.
    const std::string_view what = error.what();
    const auto reason = what.find(": ");
    throw SourceError::at_line(path_, position_.line(),
                               reason == std::string_view::npos ? what : what.substr(reason + 2));
  }

 private:
  SettingType type() const { return kSettingFields[field_].type; }
  char* place() { return reinterpret_cast<char*>(&settings_.back()) + kSettingFields[field_].offset; }

  template <class Number>
  void store(Number number) {
    std::memcpy(place(), &number, sizeof number);
  }

  [[noreturn]] void refuse(const std::string& reason) const {
    throw SourceError::at_line(path_, key_.empty() ? position_.line() : key_line_,
                               key_.empty() ? reason : key_ + ": " + reason);
  }

  bool refuse_type() const {
    if (depth_ == 0) refuse("an array of settings is expected");
    if (depth_ == 1) refuse("an object is expected");
    constexpr const char* kExpected[] = {"a text is expected", "a whole number from 0 on is expected",
                                         "a whole number is expected"};
    refuse(kExpected[static_cast<size_t>(type())]);
  }

  void require_value(SettingType expected) const {
    if (depth_ != 2 || type() != expected) refuse_type();
  }

  void require(size_t field) const {
    if (!given_.test(field))
      throw SourceError::at_line(path_, first_line_,
                                 std::string(kSettingFields[field].field.info.key) + ": is missing");
  }

  void remember_id(const std::string& id) {
    if (id.empty()) refuse("must not be empty");
    const auto [found, is_new] = lines_.emplace(id, key_line_);
    if (!is_new) refuse("'" + id + "' stands in line " + std::to_string(found->second) + " already");
  }

  const std::string& path_;
  const Position& position_;
  std::vector<SettingRecord> settings_;
  std::map<std::string, size_t> lines_;  // of the settings' ids
  int depth_ = 0;                        // 1: in the array, 2: in a setting
  FieldSet given_;                       // of the setting
  size_t first_line_ = 0;                // of the setting
  std::string key_;                      // the last one
  size_t key_line_ = 0;
  size_t field_ = 0;
  bool is_passed_over_ = false;  // the last key's value
};

}  // namespace

std::vector<SettingRecord> parse_settings(std::string_view text, const std::string& file) {
  Position position;
  Builder builder(file, position);
  nlohmann::json::sax_parse(Cursor(text.data(), &position), Cursor(text.data() + text.size(), &position),
                            &builder);
  return builder.take();
}

std::vector<SettingRecord> read_settings_file(const std::string& path) {
  return parse_settings(read_source(path), path);
}

}  // namespace zymdb::tool
