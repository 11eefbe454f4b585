#include "client/engine/mariadb/shapes.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "client/engine/mariadb/parser.h"

namespace zymdb::client::mariadb {
namespace {

constexpr std::string_view kSpaces = " \t\n\v\f\r";
constexpr double kWholeUpTo = 9007199254740992.0;  // 2^53: every integer up to here is a fraction's value

std::string_view trimmed(std::string_view text) {
  const size_t begin = text.find_first_not_of(kSpaces);
  return begin == text.npos ? std::string_view()
                            : text.substr(begin, text.find_last_not_of(kSpaces) - begin + 1);
}

// Words and hexadecimal are no numbers.
bool looks_like_number(std::string_view text) {
  return !text.empty() && text.find_first_not_of("+-.0123456789eE") == text.npos &&
         text.find_first_of("0123456789") != text.npos;
}

std::string written(double value) {
  char digits[40];
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 15).ptr;
  std::string text(digits, end);
  if (text.find_first_of(".en") == text.npos) text += ".0";
  return text;
}

}  // namespace

Argument as_number(const Argument& argument) {
  if (argument.type != Argument::Type::kText) return argument;
  std::string_view text = trimmed(argument.text);
  if (!looks_like_number(text)) return argument;
  if (text.front() == '+') text.remove_prefix(1);
  const char* const end = text.data() + text.size();
  int64_t integer = 0;
  if (const auto read = std::from_chars(text.data(), end, integer); read.ec == std::errc() && read.ptr == end)
    return Argument::of(integer);
  double real = 0;
  const auto read = std::from_chars(text.data(), end, real);
  if (read.ec != std::errc() || read.ptr != end) return argument;
  if (std::trunc(real) == real && std::abs(real) < kWholeUpTo)
    return Argument::of(static_cast<int64_t>(real));
  Argument number;
  number.type = Argument::Type::kReal;
  number.real = real;
  return number;
}

Argument as_text(const Argument& argument, std::string& storage) {
  if (argument.type == Argument::Type::kInteger)
    storage = std::to_string(argument.integer);
  else if (argument.type == Argument::Type::kReal)
    storage = written(argument.real);
  else
    return argument;
  return Argument::of(std::string_view(storage));
}

std::string regular_expression(std::string_view pattern) {
  constexpr char kHexadecimal[] = "0123456789ABCDEF";
  std::string text = "^";
  for (const char c : pattern) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '%')
      text += "[\\x00-\\xFF]*";
    else if (c == '_')
      text += kCharacter;
    else
      text.append({'\\', 'x', kHexadecimal[byte >> 4], kHexadecimal[byte & 0xF]});
  }
  return text + "\\z";
}

std::vector<Argument> Variant::arguments_of(std::span<const Argument> arguments) const {
  std::vector<Argument> ordered;
  ordered.reserve(order.size());
  for (const size_t place : order) ordered.push_back(arguments[place]);
  return ordered;
}

bool Shape::read(const Catalog& catalog, Request::Kind kind, std::string_view sql,
                 std::vector<std::string> names, std::string& reason) {
  names_ = std::move(names);
  return parse(catalog, kind, sql, parsed_, reason);
}

const Variant* Shape::reading(std::vector<Argument>& arguments, std::string& reason) {
  return find(
      arguments, {},
      [](const Select& select, std::span<const Column* const>, std::span<const Class> values, Emitted& out,
         std::string& why) { return emit_select(select, values, out, why); },
      reason);
}

const Variant* Shape::affected(std::vector<Argument>& arguments, std::span<const Column* const> columns,
                               std::string& reason) {
  return find(arguments, columns, &emit_affected, reason);
}

std::vector<Class> Shape::convert(std::vector<Argument>& arguments) const {
  static thread_local std::vector<std::string> storage;
  storage.resize(arguments.size());
  std::vector<Class> classes;
  for (size_t i = 0; i < arguments.size(); ++i) {
    const Affinity affinity = i < parsed_.affinities.size() ? parsed_.affinities[i] : Affinity::kNone;
    Argument& argument = arguments[i];
    if (affinity == Affinity::kNumber) argument = as_number(argument);
    if (affinity == Affinity::kText) argument = as_text(argument, storage[i]);
    classes.push_back(class_of(argument));
    const bool is_pattern = affinity == Affinity::kPattern && argument.type == Argument::Type::kText;
    if (!is_pattern || argument.text.find('_') == argument.text.npos) continue;
    storage[i] = regular_expression(argument.text);
    argument = Argument::of(std::string_view(storage[i]));
    classes.back() = Class::kPattern;
  }
  return classes;
}

const Variant* Shape::find(std::vector<Argument>& arguments, std::span<const Column* const> columns,
                           Emit emit, std::string& reason) {
  const std::vector<Class> classes = convert(arguments);
  std::string key;
  for (const Class each : classes) key.push_back(static_cast<char>(each));
  if (const auto known = variants_.find(key); known != variants_.end()) return &known->second;
  Emitted emitted;
  if (!emit(parsed_.select, columns, classes, emitted, reason)) return nullptr;
  Variant variant;
  variant.sql = std::move(emitted.sql.text);
  variant.order = std::move(emitted.sql.arguments);
  std::vector<std::string> names;
  for (size_t i = 0; i < emitted.columns.size(); ++i) {
    OutputColumn& column = emitted.columns[i];
    variant.classes.push_back(column.value);
    variant.expressions.push_back(column.is_expression);
    names.push_back(i < names_.size() ? names_[i] : std::move(column.name));
  }
  variant.names = std::make_shared<const NamedColumns>(std::move(names));
  return &variants_.emplace(std::move(key), std::move(variant)).first->second;
}

Shape* Shapes::find(std::string_view key) {
  const auto found = shapes_.find(key);
  return found == shapes_.end() ? nullptr : found->second.get();
}

Shape& Shapes::add(std::string_view key, Shape shape) {
  if (shapes_.size() == kMost) shapes_.clear();
  return *shapes_.emplace(std::string(key), std::make_unique<Shape>(std::move(shape))).first->second;
}

}  // namespace zymdb::client::mariadb
