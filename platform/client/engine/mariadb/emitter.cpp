#include "client/engine/mariadb/emitter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zymdb::client::mariadb {
namespace {

using Kind = Expression::Kind;

constexpr std::string_view kId = "_id";

// What SQLite takes for a number, and what of it fits 18 digits.
constexpr char kNumberPattern[] =
    "'^[[:space:]]*[-+]?([0-9]+([.][0-9]*)?|[.][0-9]+)([eE][-+]?[0-9]+)?[[:space:]]*$'";
constexpr char kIntegerPattern[] = "'^[-+]?[0-9]{1,18}$'";

struct Refusal {
  std::string reason;
};

struct Value {
  Sql sql;
  Class value = Class::kNull;
  Affinity affinity = Affinity::kNone;
  bool is_argument = false;  // which has been given its affinity already
  bool is_truth = false;     // 0, 1 or NULL
  bool is_wide = false;      // an integer that may have more than 64 bits
};

bool is_number(Class value) {
  return value == Class::kInteger || value == Class::kReal;
}

// Before which others it comes: numbers, texts, bytes.
int rank(Class value) {
  if (value == Class::kBytes) return 2;
  return value == Class::kText ? 1 : 0;
}

Sql parts(std::initializer_list<Sql> each) {
  Sql all;
  for (const Sql& part : each) all += part;
  return all;
}

class Emitter {
 public:
  explicit Emitter(std::span<const Class> arguments) : arguments_(arguments) {}

  Sql select(const Select& select, std::vector<OutputColumn>* columns, bool is_outermost);
  Sql condition(const Select& select);
  Sql sources(const Select& select);
  Sql column(const Column& column, size_t table) {
    return Sql("t" + std::to_string(table) + "." + identifier(column.name));
  }

 private:
  Value emit(const Expression& e);
  Sql truth(const Expression& e) { return truth(emit(e)); }
  Sql truth(const Value& value);
  Sql number(const Value& value);
  Sql wide(const Value& value);
  Sql integer(const Value& value);
  Sql text(const Value& value);

  Value argument(const Expression& e);
  Value unary(const Expression& e);
  Value binary(const Expression& e);
  Value connect(const Expression& e, const char* word);
  Value between(const Expression& e);
  Value in(const Expression& e);
  Value in_select(const Expression& e);
  Value like(const Expression& e);
  Value call(const Expression& e);
  Value aggregate(const Expression& e);
  Value scalar(const Expression& e);
  Value cut(const Expression& e, const Value& value);
  Value choice(const Expression& e);
  Value letters(const Expression& e, char first);
  Value sub_select(const Expression& e);

  Sql compare(std::string_view word, Value left, Value right);
  Sql compare_number_with_text(std::string_view word, const Value& number, const Value& text, bool swapped);
  static Sql constant(std::string_view word, const Value& left, const Value& right);

  Sql distinct_rows(const Select& select);
  Sql order(const Select& select, bool has_aggregate);
  static Sql limit(const Select& select);

  std::span<const Class> arguments_;
  size_t lowest_table_ = std::numeric_limits<size_t>::max();  // that was named
};

Value made(Sql sql, Class value) {
  return {std::move(sql), value};
}
Value truth_value(Sql sql) {
  return {std::move(sql), Class::kInteger, Affinity::kNone, false, true};
}

// Of several values min and max are functions like others.
bool is_aggregate_call(const Expression& e) {
  static constexpr std::string_view kAggregates[] = {"count", "sum", "avg", "total"};
  if (e.kind != Kind::kCall) return false;
  return std::ranges::find(kAggregates, e.word) != std::end(kAggregates) ||
         ((e.word == "min" || e.word == "max") && e.parts.size() == 1);
}

bool has_aggregate(const Expression& e) {
  return is_aggregate_call(e) || std::ranges::any_of(e.parts, has_aggregate);
}

bool is_aggregate(const Select& select) {
  return !select.groups.empty() || (select.having && has_aggregate(*select.having)) ||
         std::ranges::any_of(select.items, [](const Item& item) { return has_aggregate(item.value); });
}

Value Emitter::emit(const Expression& e) {
  switch (e.kind) {
    case Kind::kColumn: {
      lowest_table_ = std::min(lowest_table_, e.table);
      Value value{column(*e.column, e.table), Class::kInteger, Affinity::kNumber};
      if (e.column->is_text) value = {std::move(value.sql), Class::kText, Affinity::kText};
      if (e.column->is_bytes) value = {std::move(value.sql), Class::kBytes};
      return value;
    }
    case Kind::kArgument:
      return argument(e);
    case Kind::kNull:
      return made("NULL", Class::kNull);
    case Kind::kNumber:
      return made(e.word, e.word.find('.') == e.word.npos ? Class::kInteger : Class::kReal);
    case Kind::kUnary:
      return unary(e);
    case Kind::kBinary:
      return binary(e);
    case Kind::kCompare:
      return truth_value(compare(e.word, emit(e.parts[0]), emit(e.parts[1])));
    case Kind::kNot:
      return truth_value(parts({"(NOT ", truth(e.parts[0]), ")"}));
    case Kind::kAnd:
      return connect(e, " AND ");
    case Kind::kOr:
      return connect(e, " OR ");
    case Kind::kBetween:
      return between(e);
    case Kind::kIn:
      return in(e);
    case Kind::kInSelect:
      return in_select(e);
    case Kind::kLike:
      return like(e);
    case Kind::kCall:
      return call(e);
    case Kind::kSelect:
      return sub_select(e);
    case Kind::kExists:
      return truth_value(parts({"EXISTS (", select(*e.select, nullptr, false), ")"}));
  }
  throw Refusal{"a statement that is not understood"};
}

Value Emitter::argument(const Expression& e) {
  Value value;
  value.sql.text = "?";
  value.sql.arguments = {e.argument};
  value.value = arguments_[e.argument] == Class::kPattern ? Class::kText : arguments_[e.argument];
  value.is_argument = true;
  if (value.value == Class::kNull) value.sql = "NULL";
  return value;
}

// What counts as true: a number other than 0. Of a text counts the number that it begins with.
Sql Emitter::truth(const Value& value) {
  if (value.is_truth) return value.sql;
  if (value.value == Class::kNull) return "NULL";
  return parts({"(", number(value), "<>0)"});
}

Sql Emitter::number(const Value& value) {
  if (is_number(value.value) || value.value == Class::kNull) return value.sql;
  return parts({"(", value.sql, "+0e0)"});
}

// SQLite goes on with a fraction where 64 bits are too few.
Sql Emitter::wide(const Value& value) {
  if (value.is_wide || value.value != Class::kInteger) return number(value);
  return parts({"CAST(", value.sql, " AS DECIMAL(38,0))"});
}

Sql Emitter::integer(const Value& value) {
  if (value.is_wide) return parts({"CAST(", value.sql, " AS SIGNED)"});
  if (value.value == Class::kInteger || value.value == Class::kNull) return value.sql;
  return parts({"CAST(TRUNCATE(", value.sql, "+0e0,0) AS SIGNED)"});
}

Sql Emitter::text(const Value& value) {
  if (!is_number(value.value)) return value.sql;
  return parts({"CAST(", value.sql, " AS BINARY)"});
}

Value Emitter::unary(const Expression& e) {
  const Value value = emit(e.parts[0]);
  if (value.value == Class::kNull) return value;
  if (e.word == "+") {
    Value same = made(value.sql, value.value);
    same.is_wide = value.is_wide;
    return same;
  }
  if (e.word == "~") return made(parts({"CAST(~", integer(value), " AS SIGNED)"}), Class::kInteger);
  Value negative =
      made(parts({"(-", wide(value), ")"}), value.value == Class::kInteger ? Class::kInteger : Class::kReal);
  negative.is_wide = negative.value == Class::kInteger;
  return negative;
}

Sql shift_left(const Sql& value, const Sql& by) {
  return parts({"CAST((", value, ")<<(", by, ") AS SIGNED)"});
}
// The sign fills in from the left.
Sql shift_right(const Sql& value, const Sql& by) {
  return parts({"CASE WHEN ", value, ">=0 THEN CAST((", value, ")>>(", by, ") AS SIGNED) ELSE CAST(~((~(",
                value, "))>>(", by, ")) AS SIGNED) END"});
}
// To the other side by less than nothing.
Sql shift(const Sql& value, const Sql& by, bool left) {
  const Sql back = parts({"-(", by, ")"});
  return parts({"CASE WHEN ", by, ">=0 THEN ", left ? shift_left(value, by) : shift_right(value, by),
                " ELSE ", left ? shift_right(value, back) : shift_left(value, back), " END"});
}

Value Emitter::binary(const Expression& e) {
  const Value left = emit(e.parts[0]);
  const Value right = emit(e.parts[1]);
  const std::string& word = e.word;
  if (left.value == Class::kNull || right.value == Class::kNull) return made("NULL", Class::kNull);
  if (word == "||") return made(parts({"CONCAT(", text(left), ",", text(right), ")"}), Class::kText);
  if (word == "<<" || word == ">>")
    return made(parts({"(", shift(integer(left), integer(right), word == "<<"), ")"}), Class::kInteger);
  if (word == "&" || word == "|")
    return made(parts({"CAST(", integer(left), word, integer(right), " AS SIGNED)"}), Class::kInteger);
  const bool whole = left.value == Class::kInteger && right.value == Class::kInteger;
  const Class value = whole ? Class::kInteger : Class::kReal;
  if (word == "%") return made(parts({"(", integer(left), " % ", integer(right), ")"}), value);
  if (word == "/" && whole) return made(parts({"(", integer(left), " DIV ", integer(right), ")"}), value);
  if (word == "/") return made(parts({"(", number(left), "/", number(right), ")"}), value);
  Value result = made(parts({"(", wide(left), word, wide(right), ")"}), value);
  result.is_wide = whole;
  return result;
}

// As long as a chain is, it nests no deeper.
Value Emitter::connect(const Expression& e, const char* word) {
  std::vector<const Expression*> chain;
  const Expression* left = &e;
  for (; left->kind == e.kind; left = &left->parts[0]) chain.push_back(&left->parts[1]);
  Sql sql = parts({"(", truth(*left)});
  for (auto each = chain.rbegin(); each != chain.rend(); ++each) sql += parts({word, truth(**each)});
  sql += ")";
  return truth_value(std::move(sql));
}

Value Emitter::between(const Expression& e) {
  const Value value = emit(e.parts[0]);
  const Sql both = parts(
      {"(", compare(">=", value, emit(e.parts[1])), " AND ", compare("<=", value, emit(e.parts[2])), ")"});
  return truth_value(e.negated ? parts({"(NOT ", both, ")"}) : both);
}

// The values of one kind are a list of MariaDB's; the others are equal to none.
Value Emitter::in(const Expression& e) {
  if (e.parts.size() == 1) return truth_value(e.negated ? "1" : "0");
  const Value value = emit(e.parts[0]);
  Sql list;
  Sql others;
  for (size_t i = 1; i < e.parts.size(); ++i) {
    Value each = emit(e.parts[i]);
    each.affinity = Affinity::kNone;
    const bool alike = each.is_argument && value.value != Class::kNull &&
                       (each.value == value.value || each.value == Class::kNull);
    if (alike && each.value != Class::kNull)
      list += parts({list.text.empty() ? "" : ",", each.sql});
    else
      others += parts({others.text.empty() ? "" : " OR ", compare("=", value, std::move(each))});
  }
  Sql sql = "(";
  if (!list.text.empty()) sql += parts({value.sql, " IN (", list, ")"});
  if (!others.text.empty()) sql += parts({list.text.empty() ? "" : " OR ", others});
  sql += ")";
  return truth_value(e.negated ? parts({"(NOT ", sql, ")"}) : sql);
}

// Compared within: a sub-select whose values are of another kind. MariaDB has no LIMIT behind IN, but one
// level below, where nothing names what is around it.
Value Emitter::in_select(const Expression& e) {
  const Value value = emit(e.parts[0]);
  const size_t lowest = std::exchange(lowest_table_, std::numeric_limits<size_t>::max());
  std::vector<OutputColumn> columns;
  Sql rows = select(*e.select, &columns, false);
  if (e.select->limit) {
    if (lowest_table_ < e.select->sources.front().number)
      throw Refusal{"a sub-select after IN that has a LIMIT and names columns around it"};
    rows = parts({"SELECT * FROM (", rows, ") AS d"});
  }
  lowest_table_ = std::min(lowest, lowest_table_);
  if (columns.size() != 1) throw Refusal{"a sub-select of several columns"};
  const Class other = columns[0].value;
  const bool alike = value.value != Class::kNull && other != Class::kNull && rank(value.value) == rank(other);
  if (!alike) throw Refusal{"a sub-select whose values are of another kind"};
  return truth_value(parts({"(", value.sql, e.negated ? " NOT IN (" : " IN (", rows, "))"}));
}

Value Emitter::like(const Expression& e) {
  const Value value = emit(e.parts[0]);
  const Value pattern = emit(e.parts[1]);
  if (value.value == Class::kNull || pattern.value == Class::kNull) return truth_value("NULL");
  const bool is_regular =
      e.parts[1].kind == Kind::kArgument && arguments_[e.parts[1].argument] == Class::kPattern;
  const char* word = e.negated ? " NOT LIKE " : " LIKE ";
  if (is_regular) word = e.negated ? " NOT REGEXP " : " REGEXP ";
  Sql sql = parts({"(", text(value), word, text(pattern)});
  if (e.parts.size() == 3) {
    const Value escape = emit(e.parts[2]);
    if (!escape.is_argument || escape.value != Class::kText)
      throw Refusal{"an ESCAPE that is not one character"};
    sql += parts({" ESCAPE ", escape.sql});
  }
  sql += ")";
  return truth_value(std::move(sql));
}

Value Emitter::sub_select(const Expression& e) {
  Select one = *e.select;
  if (one.limit.value_or(1) != 0) one.limit = 1;
  std::vector<OutputColumn> columns;
  const Sql rows = select(one, &columns, false);
  Value value = made(parts({"(", rows, ")"}), columns.at(0).value);
  const Expression& item = one.items[0].value;
  if (item.kind == Kind::kColumn) value.affinity = emit(item).affinity;
  return value;
}

Value Emitter::call(const Expression& e) {
  if (is_aggregate_call(e)) return aggregate(e);
  if (e.star || e.distinct) throw Refusal{"a function that is no aggregate"};
  if (e.word == "coalesce" || e.word == "ifnull" || e.word == "nullif" || e.word == "min" || e.word == "max")
    return choice(e);
  return scalar(e);
}

Value Emitter::aggregate(const Expression& e) {
  const char* const distinct = e.distinct ? "DISTINCT " : "";
  if (e.word == "count" && (e.star || e.parts.empty())) return made("COUNT(*)", Class::kInteger);
  if (e.star || e.parts.size() != 1) throw Refusal{"wrong number of arguments"};
  const Value value = emit(e.parts[0]);
  if (e.word == "count") return made(parts({"COUNT(", distinct, value.sql, ")"}), Class::kInteger);
  if (e.word == "min" || e.word == "max") {
    Value most = made(parts({e.word == "min" ? "MIN(" : "MAX(", value.sql, ")"}), value.value);
    most.is_wide = value.is_wide;
    return most;
  }
  if (e.word == "sum" && value.value == Class::kInteger)
    return made(parts({"(SUM(", distinct, value.sql, ") DIV 1)"}), Class::kInteger);
  const Sql real = parts({distinct, number(value), "+0e0"});
  if (e.word == "sum") return made(parts({"SUM(", real, ")"}), Class::kReal);
  if (e.word == "avg") return made(parts({"AVG(", real, ")"}), Class::kReal);
  return made(parts({"COALESCE(SUM(", real, "),0e0)"}), Class::kReal);
}

// All of one kind, as far as they are no NULLs.
Value Emitter::choice(const Expression& e) {
  const bool is_pair = e.word == "ifnull" || e.word == "nullif";
  if (e.parts.size() < 2 || (is_pair && e.parts.size() != 2)) throw Refusal{"wrong number of arguments"};
  Sql list;
  Class value = Class::kNull;
  bool is_wide = false;
  for (const Expression& part : e.parts) {
    const Value each = emit(part);
    if (value != Class::kNull && each.value != Class::kNull && rank(each.value) != rank(value))
      throw Refusal{"a function of values of several kinds"};
    if (value == Class::kNull || each.value == Class::kReal) value = each.value;
    is_wide |= each.is_wide;
    list += parts({list.text.empty() ? "" : ",", each.sql});
  }
  const char* name = "COALESCE(";
  if (e.word == "nullif") name = "NULLIF(";
  if (e.word == "min") name = "LEAST(";
  if (e.word == "max") name = "GREATEST(";
  Value chosen = made(parts({name, list, ")"}), value);
  chosen.is_wide = is_wide && value == Class::kInteger;
  return chosen;
}

// ASCII letters alone, as SQLite does it.
Value Emitter::letters(const Expression& e, char first) {
  Sql sql = text(emit(e.parts[0]));
  const int other = first == 'A' ? 32 : -32;
  for (int i = 0; i < 26; ++i) {
    const std::string from(1, static_cast<char>(first + i));
    const std::string to(1, static_cast<char>(first + i + other));
    sql = parts({"REPLACE(", sql, Sql(",'" + from + "','" + to + "')")});
  }
  return made(std::move(sql), Class::kText);
}

Sql length(const Sql& text, Class value) {
  if (value == Class::kBytes) return parts({"LENGTH(", text, ")"});
  return parts({"LENGTH(REGEXP_REPLACE(", text, ",'", kCharacter, "','x'))"});
}

// So many of the first characters of a text in which a NUL, which no text has, stands before each.
Sql first_characters(const Sql& text, const Sql& count) {
  return parts({"SUBSTRING_INDEX(", text, ",X'00',1+", count, ")"});
}

// A window of so many characters over the text, of which some may lie before its beginning.
Value Emitter::cut(const Expression& e, const Value& value) {
  const Sql whole = text(value);
  const auto places = [&](const Expression& part) {
    return parts({"LEAST(GREATEST(", integer(emit(part)), ",-2000000000),2000000000)"});
  };
  const Sql place = places(e.parts[1]);
  const Sql size = e.parts.size() == 3 ? places(e.parts[2]) : Sql("2000000000");
  const Sql start = parts(
      {"(CASE WHEN ", place, "<0 THEN ", length(whole, value.value), "+", place, " ELSE ", place, "-1 END)"});
  const Sql skipped = parts({"GREATEST(", start, "+LEAST(", size, ",0),0)"});
  const Sql end = parts({"GREATEST(", start, "+GREATEST(", size, ",0),0)"});
  if (value.value == Class::kBytes)
    return made(parts({"SUBSTR(", whole, ",1+", skipped, ",", end, "-", skipped, ")"}), value.value);
  const Sql told_apart = parts({"REGEXP_REPLACE(", whole, ",'(", kCharacter, ")',CONCAT(X'00','\\1'))"});
  return made(parts({"REPLACE(SUBSTR(", first_characters(told_apart, end), ",1+LENGTH(",
                     first_characters(told_apart, skipped), ")),X'00','')"}),
              Class::kText);
}

Value Emitter::scalar(const Expression& e) {
  const bool is_substr = e.word == "substr";
  if (is_substr ? e.parts.size() != 2 && e.parts.size() != 3 : e.parts.size() != 1)
    throw Refusal{"wrong number of arguments"};
  const Value value = emit(e.parts[0]);
  if (value.value == Class::kNull) return value;
  if (e.word == "lower") return letters(e, 'A');
  if (e.word == "upper") return letters(e, 'a');
  if (e.word == "length") return made(length(text(value), value.value), Class::kInteger);
  if (is_substr) return cut(e, value);
  if (e.word == "abs") {
    Value absolute = made(parts({"ABS(", number(value), ")"}),
                          value.value == Class::kInteger ? value.value : Class::kReal);
    absolute.is_wide = value.is_wide;
    return absolute;
  }
  const char* name = "TRIM(";
  if (e.word == "ltrim") name = "LTRIM(";
  if (e.word == "rtrim") name = "RTRIM(";
  return made(parts({name, text(value), ")"}), Class::kText);
}

// With SQLite's affinities: a number's makes a number of a text that is one, a text's a text of a number.
Sql Emitter::compare(std::string_view word, Value left, Value right) {
  const bool is = word.starts_with("IS");
  if (left.value == Class::kNull || right.value == Class::kNull) {
    if (!is) return "NULL";
    const bool first = left.value != Class::kNull;
    return parts({"((", first ? left.sql : right.sql, word == "IS" ? ") IS NULL)" : ") IS NOT NULL)"});
  }
  const bool reckons = left.affinity == Affinity::kNumber || right.affinity == Affinity::kNumber;
  if (reckons && left.value == Class::kText && is_number(right.value) && !left.is_argument)
    return compare_number_with_text(word, right, left, true);
  if (reckons && right.value == Class::kText && is_number(left.value) && !right.is_argument)
    return compare_number_with_text(word, left, right, false);
  if (!reckons && left.affinity == Affinity::kText && is_number(right.value))
    right = made(text(right), Class::kText);
  if (!reckons && right.affinity == Affinity::kText && is_number(left.value))
    left = made(text(left), Class::kText);
  if (rank(left.value) != rank(right.value)) return constant(word, left, right);
  // MariaDB would round a fraction for the sake of an integer column.
  if (left.value == Class::kReal && right.value == Class::kInteger)
    right.sql = parts({"(", right.sql, "+0e0)"});
  if (right.value == Class::kReal && left.value == Class::kInteger)
    left.sql = parts({"(", left.sql, "+0e0)"});
  if (word == "IS") return parts({"((", left.sql, ")<=>(", right.sql, "))"});
  if (word == "IS NOT") return parts({"(NOT((", left.sql, ")<=>(", right.sql, ")))"});
  return parts({"(", left.sql, Sql(std::string(word)), right.sql, ")"});
}

// What the comparison of two kinds is, whatever the values: numbers come before texts, texts before bytes.
Sql Emitter::constant(std::string_view word, const Value& left, const Value& right) {
  const bool less = rank(left.value) < rank(right.value);
  if (word == "IS" || word == "IS NOT") {
    const Sql both = parts({"((", left.sql, ") IS NULL AND (", right.sql, ") IS NULL)"});
    return word == "IS" ? both : parts({"(NOT ", both, ")"});
  }
  const bool holds = word == "<>" || (less ? word.starts_with('<') : word.starts_with('>'));
  return parts({"(CASE WHEN (", left.sql, ") IS NULL OR (", right.sql, ") IS NULL THEN NULL ELSE ",
                holds ? "1" : "0", " END)"});
}

Sql Emitter::compare_number_with_text(std::string_view word, const Value& number, const Value& text,
                                      bool swapped) {
  const auto direct = [&](const Sql& converted) {
    const Value other = made(converted, Class::kReal);
    return swapped ? compare(word, other, made(number.sql, number.value))
                   : compare(word, made(number.sql, number.value), other);
  };
  return parts({"(CASE WHEN ", text.sql, " REGEXP ", kIntegerPattern, " THEN ",
                direct(parts({"CAST(", text.sql, " AS SIGNED)"})), " WHEN ", text.sql, " REGEXP ",
                kNumberPattern, " THEN ", direct(parts({"(", text.sql, "+0e0)"})), " ELSE ",
                swapped ? constant(word, text, number) : constant(word, number, text), " END)"});
}

Sql Emitter::sources(const Select& select) {
  Sql sql = " FROM ";
  const char* separator = "";
  for (const Source& source : select.sources) {
    sql += parts({separator, identifier(source.table->name()), Sql(" AS t" + std::to_string(source.number))});
    separator = ",";
  }
  return sql;
}

Sql Emitter::condition(const Select& select) {
  if (!select.where) return {};
  return parts({" WHERE ", truth(*select.where)});
}

Sql Emitter::select(const Select& select, std::vector<OutputColumn>* columns, bool is_outermost) {
  Sql items;
  for (const Item& item : select.items) {
    Value value = emit(item.value);
    const Class output = value.is_wide && is_outermost ? Class::kWide : value.value;
    if (columns != nullptr) columns->push_back({item.name, output, item.value.kind != Kind::kColumn});
    items += parts({items.text.empty() ? "" : ",", value.sql});
  }
  const bool aggregates = is_aggregate(select);
  const bool orders = is_outermost || select.limit;
  const bool groups_for_distinct = select.distinct && !aggregates && orders && select.orders.empty();
  Sql sql = parts({select.distinct && !groups_for_distinct ? "SELECT DISTINCT " : "SELECT ", items,
                   sources(select), condition(select)});
  if (groups_for_distinct) sql += distinct_rows(select);
  const char* separator = " GROUP BY ";
  for (const Expression& group : select.groups) {
    sql += parts({separator, emit(group).sql});
    separator = ",";
  }
  if (select.having) sql += parts({" HAVING ", truth(*select.having)});
  if (orders && !groups_for_distinct) sql += order(select, aggregates);
  sql += limit(select);
  return sql;
}

// In the order in which they come first.
Sql Emitter::distinct_rows(const Select& select) {
  Sql sql;
  const char* separator = " GROUP BY ";
  // By their places: an argument would be taken for one.
  for (size_t place = 1; place <= select.items.size(); ++place) {
    sql += parts({separator, std::to_string(place)});
    separator = ",";
  }
  separator = " ORDER BY ";
  for (const Source& source : select.sources) {
    sql += parts({separator, "MIN(", column(*source.table->column(kId), source.number), ")"});
    separator = ",";
  }
  return sql;
}

// Rows that are alike otherwise come in the order of "_id", groups in that of what they are grouped by.
Sql Emitter::order(const Select& select, bool aggregates) {
  Sql sql;
  const auto add = [&](const Sql& by, bool descending) {
    sql += parts({sql.text.empty() ? " ORDER BY " : ",", by, descending ? " DESC" : ""});
  };
  for (const Order& order : select.orders) add(emit(order.by).sql, order.descending);
  for (const Expression& group : select.groups) add(emit(group).sql, false);
  if (aggregates || select.distinct) return sql;
  for (const Source& source : select.sources) add(column(*source.table->column(kId), source.number), false);
  return sql;
}

Sql Emitter::limit(const Select& select) {
  if (!select.limit) return {};
  const bool bounded = *select.limit >= 0;
  const uint64_t count =
      bounded ? static_cast<uint64_t>(*select.limit) : std::numeric_limits<uint64_t>::max();
  Sql sql(" LIMIT " + std::to_string(count));
  if (select.offset > 0) sql += Sql(" OFFSET " + std::to_string(select.offset));
  return sql;
}

}  // namespace

Class class_of(const Argument& argument) {
  switch (argument.type) {
    case Argument::Type::kInteger:
      return Class::kInteger;
    case Argument::Type::kReal:
      return Class::kReal;
    case Argument::Type::kText:
      return Class::kText;
    case Argument::Type::kBlob:
      return Class::kBytes;
    default:
      return Class::kNull;
  }
}

std::string identifier(std::string_view name) {
  std::string sql;
  append_identifier(sql, name, {'`', {}});
  return sql;
}

bool emit_select(const Select& select, std::span<const Class> arguments, Emitted& out, std::string& reason) {
  try {
    out.sql = Emitter(arguments).select(select, &out.columns, true);
    return true;
  } catch (const Refusal& refusal) {
    reason = refusal.reason;
    return false;
  }
}

bool emit_affected(const Select& select, std::span<const Column* const> columns,
                   std::span<const Class> arguments, Emitted& out, std::string& reason) {
  Select affected = select;
  const Source& source = affected.sources.front();
  const auto add = [&](const Column& column) {
    Item item{{}, column.name};
    item.value.kind = Kind::kColumn;
    item.value.column = &column;
    item.value.table = source.number;
    affected.items.push_back(std::move(item));
  };
  add(*source.table->column(kId));
  for (const Column* const column : columns) add(*column);
  if (!emit_select(affected, arguments, out, reason)) return false;
  out.sql += " FOR UPDATE";
  return true;
}

}  // namespace zymdb::client::mariadb
